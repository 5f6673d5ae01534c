#pragma once
// The seven predefined registry roots the engine knows, and the pseudo root "HKEY_ALL".

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace regvex {

using RootKeyHandle = std::uint32_t;

inline constexpr RootKeyHandle kHkeyAll = 0;  // every root; not a registry handle
inline constexpr RootKeyHandle kHkeyClassesRoot = 0x80000000;
inline constexpr RootKeyHandle kHkeyCurrentUser = 0x80000001;
inline constexpr RootKeyHandle kHkeyLocalMachine = 0x80000002;
inline constexpr RootKeyHandle kHkeyUsers = 0x80000003;
inline constexpr RootKeyHandle kHkeyPerformanceData = 0x80000004;
inline constexpr RootKeyHandle kHkeyCurrentConfig = 0x80000005;
inline constexpr RootKeyHandle kHkeyDynData = 0x80000006;

// The order in which a search of every root visits them. Classes first and the users
// last is how the program has always walked, and its progress steps depend on it.
inline constexpr std::array<RootKeyHandle, 7> kSearchOrder{
    kHkeyClassesRoot,  kHkeyCurrentUser, kHkeyPerformanceData, kHkeyCurrentConfig, kHkeyDynData,
    kHkeyLocalMachine, kHkeyUsers};

// Exact, case-sensitive: "hkey_local_machine" is not a root. "HKEY_ALL" and every
// unknown text give 0.
RootKeyHandle RootKeyFromName(std::string_view name);

// The root's name; the empty text for 0 and for anything that is not one of the seven.
const std::string& RootKeyName(RootKeyHandle root);

}  // namespace regvex
