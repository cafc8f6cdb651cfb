// The search for points that a later point equals.
#pragma once

#include <cstdint>
#include <memory>

#include "core/workspace.h"
#include "geometry/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// Linear expected time; tables of about 20 bytes a point, of which few are allocated for a hundred points.
class duplicate_search {
 public:
  explicit duplicate_search(ulong count);
  duplicate_search(const duplicate_search&) = delete;

  // Where the hash values of the points go.
  std::uint32_t* hashes() { return hashes_; }
  // Marks the points that a later point equals; null if there are none. -0.0 equals 0.0, a point with NaN equals
  // nothing.
  std::unique_ptr<bool[]> marked(const vector3d* pts);

 private:
  std::size_t list_suspects();

  static constexpr std::size_t padding = 32;  // for the whole vectors of the kernels

  std::size_t count_;
  workspace<std::uint32_t, 2 * 160 + padding + 1> room_;
  std::uint32_t* const hashes_;
  std::uint32_t* const listed_;  // points, behind the hash values
};

}  // namespace tessarn::detail
