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

// A holder more. Throws std::bad_alloc, and changes nothing then. Gives the array back; null is none.
real* share(real* array);

// A holder less; the last one releases the array.
void give_up(real* array) noexcept;

// A holder less for an array that stays with another one, whether or not the table knows of both.
void leave(real* array) noexcept;

// A new array, whose only holder the caller is. A program can take the array out of an object of a derived class and
// release it itself: what the table still says of an older array at this address is dropped.
real* held(real_array array) noexcept;

}  // namespace tessarn::detail
