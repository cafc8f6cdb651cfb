// The operations that the checked mode of the headers calls after its test of the sizes: the documented members, by
// other names.
#include "matrix/names.h"

namespace tessarn::detail {

real_mat unchecked::sum(const real_mat& a, const real_mat& b) { return a + b; }
real_mat unchecked::difference(const real_mat& a, const real_mat& b) { return a - b; }
real_mat unchecked::product(const real_mat& a, const real_mat& b) { return a * b; }
bool unchecked::equal(const real_mat& a, const real_mat& b) { return a == b; }
void unchecked::solve(real_mat& x, const real_mat& A, const real_mat& b) { x.solve(A, b); }
bool unchecked::equal(const real_sqmat& a, const real_sqmat& b) { return a == b; }
void unchecked::multiply(real_sqmat& a, const real_sqmat& b) { a *= b; }
void unchecked::multiply(complex_sqmat& a, const complex_sqmat& b) { a *= b; }
void unchecked::set_column(real_sqmat& a, ulong x, const real_mat& column) { a.setColumn(x, column); }
void unchecked::set_column(complex_sqmat& a, ulong x, const complex_mat& column) { a.setColumn(x, column); }
void unchecked::solve(const real_sqmat& a, real_mat& b) { a.solve(b); }
void unchecked::solve(const complex_sqmat& a, complex_mat& b) { a.solve(b); }

}  // namespace tessarn::detail
