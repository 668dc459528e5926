// What several peers' sources need: outputs, and views of them.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace lumr::bench {

// An output that is not cleared first. Shared, because an operation must be copyable.
template <typename T>
std::shared_ptr<T[]> MakeRoom(std::size_t count) {
  return std::shared_ptr<T[]>(new T[count]);
}

// The bytes of the first count elements.
template <typename T, typename Count>
std::string_view ViewOf(const std::shared_ptr<T[]>& room, Count count) {
  return {reinterpret_cast<const char*>(room.get()), static_cast<std::size_t>(count) * sizeof(T)};
}

inline const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace lumr::bench
