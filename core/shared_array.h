// Coefficient arrays that several objects may hold, since the copy constructors of the polynomials share them: the last
// holder releases the array. An object has no room for a count of holders; the count of the further ones stands in a
// table, where it appears with the first copy.
//
// Distinct objects may be used by several threads, also objects that share an array. Let a be such a holder, about to
// give its array up. A further holder that is alive was made by a copy before a was handed to this thread, or by this
// thread, so the entry of the array is there and is seen: it is erased only when a single holder is left. If a sees no
// entry, a is therefore the only holder. That the other holders are done with the array is then known as well: the last
// of them erased the entry, and whoever finds that out, by the number of entries with acquire order or under the lock,
// sees all that this holder did before. No other thread can make a copy of a meanwhile, since a is in use here.
#pragma once

#include "core/storage.h"

namespace tessarn::detail {

// Counts one holder more, and returns the array. Null has no holders. Throws std::bad_alloc, and changes nothing then.
real* share(real* array);

// Counts one holder less; the last one releases the array.
void give_up(real* array) noexcept;

// Counts one holder less of an array that another one keeps, whether or not the table knows of both.
void leave(real* array) noexcept;

// Hands a new array to its only holder. A program can take an array out of an object of a derived class and release it
// itself: what the table still says of such an older array at this address is dropped.
real* held(real_array array) noexcept;

}  // namespace tessarn::detail
