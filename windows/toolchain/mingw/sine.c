/* MinGW-w64's own sine and cosine are the instructions fsin and fcos, which near the multiples of pi have no
   correct digit and for large angles return the angle. Here are those of the system's C run-time instead. */
extern double (*__imp_sin)(double);
extern double (*__imp_cos)(double);

double sin(double x) { return __imp_sin(x); }
double cos(double x) { return __imp_cos(x); }
void sincos(double x, double* s, double* c) {
  *s = __imp_sin(x);
  *c = __imp_cos(x);
}
