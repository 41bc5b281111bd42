// FNV-1a, by which a test knows a long text without a copy of it.
#pragma once

#include <cstdint>
#include <string>

inline std::uint64_t fnv(const std::string &text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return hash;
}
