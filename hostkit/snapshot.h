// The snapshot file: a whole store, written so that a reader finds either the old one or the new one.
//
// Layout, all numbers little-endian: eight bytes of magic; the payload's length (64 bits); the payload; a 64-bit
// FNV-1a sum of all that comes before it. The payload is one record for each key:
//   kind (8 bits), database (8 bits), name, deadline, value
// Texts and bytes have a 32-bit length in front. A deadline is one byte, 0 for none, else 1 and 64 bits of calendar
// milliseconds. Values: string: bytes; hash: count, then tag (32 bits), bytes, deadline, 0 or 1 (8 bits, without a
// meaning); list and set: count, then bytes; sorted set: count, then member and score (the 64 bits of a double). A
// count has 32 bits.
#pragma once

#include <string>
#include <string_view>

#include "hostkit/clock.h"
#include "hostkit/store.h"

namespace hostkit {

// All of these may throw std::bad_alloc, with nothing changed. A status says why a file or its bytes cannot be used.
std::string EncodeSnapshot(const Store& store, const Clock& clock);
// If the bytes are not a whole snapshot, the store is as before.
Status DecodeSnapshot(std::string_view bytes, const Clock& clock, Store* store);

// If the file cannot be replaced, it is as before.
Status WriteSnapshot(const std::string& path, const Clock& clock, const Store& store);
// Leaves the store as it is when there is no such file, too.
Status ReadSnapshot(const std::string& path, const Clock& clock, Store* store);

}  // namespace hostkit
