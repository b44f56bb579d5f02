// Counts the owners of the blocks that assigned ZComBSTR objects share: the last owner frees a
// block.
#pragma once

namespace zr {

/// Adds an owner to a block.
/// @param block  null is ignored.
/// @return false when out of memory; the block then has no further owner.
bool addOwner(const void* block);

/// Removes an owner from a block.
/// @return true when the caller was the last owner and has to free the block.
bool dropOwner(const void* block);

}  // namespace zr
