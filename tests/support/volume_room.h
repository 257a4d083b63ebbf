// The room on a volume, as the host tells it.
#pragma once

#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <filesystem>
#include <vector>

namespace corvane::testing {

struct VolumeRoom {
  std::uint64_t total = 0;
  std::uint64_t free = 0;  // for whoever is not the superuser
  friend bool operator==(const VolumeRoom&, const VolumeRoom&) = default;
};

inline VolumeRoom RoomOn(const std::filesystem::path& directory) {
  struct statvfs volume = {};
  EXPECT_EQ(::statvfs(directory.c_str(), &volume), 0) << directory;
  const std::uint64_t block = volume.f_frsize;
  return {volume.f_blocks * block, volume.f_bavail * block};
}

// The room on these volumes together, and what `ask` answered while it was so. Others write to them
// meanwhile, and may have put things back behind the answer: it is asked again until nothing has
// changed in between and the answer `tells` the room, but not for ever.
template <typename Ask, typename Tells>
auto AskAtRest(const std::vector<std::filesystem::path>& directories, VolumeRoom* room, Ask ask,
               Tells tells) {
  const auto sum = [&directories] {
    VolumeRoom all;
    for (const std::filesystem::path& directory : directories) {
      const VolumeRoom one = RoomOn(directory);
      all.total += one.total;
      all.free += one.free;
    }
    return all;
  };
  for (int attempt = 0;; ++attempt) {
    *room = sum();
    const auto answer = ask();
    if ((sum() == *room && tells(answer, *room)) || attempt == 1000) return answer;
  }
}

}  // namespace corvane::testing
