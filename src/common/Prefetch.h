/// @file
/// Asking for memory before it is needed, where the compiler can: no result depends on it.
#pragma once

namespace morvane::common
{

/// Asks for the memory around @p address, which need not be valid.
inline void Prefetch([[maybe_unused]] void const * address)
{
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

} // namespace morvane::common
