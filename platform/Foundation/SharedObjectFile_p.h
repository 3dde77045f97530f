#pragma once

#include <cstddef>
#include <span>

namespace tovi {

/// What is wrong with the bytes of a shared object, or null. The dynamic loader trusts what a file says about itself
/// and dies of one that was cut off or overwritten; so everything that it follows is seen to lie where it should before
/// the file is given to it: segments, dynamic section, symbols, versions, relocations. Damage to the code itself stays
/// unnoticed.
const char* faultOfSharedObject(std::span<const std::byte> file);

}  // namespace tovi
