// Counts the owners of blocks that assigned ZComBSTR objects share, so that only the last frees.
#pragma once

namespace zr {

/// Notes that a block has one owner more.
/// @param block  null is ignored.
/// @return false when memory is short; the block then has no further owner.
bool addOwner(const void* block);

/// Gives up one owner's share.
/// @return true when the caller was the only owner left and has to free the block.
bool dropOwner(const void* block);

}  // namespace zr
