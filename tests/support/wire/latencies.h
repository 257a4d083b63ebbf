// How long requests took, told and never judged: a machine under load is slow and right.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace corvane::testing {

class Latencies {
 public:
  using Duration = std::chrono::steady_clock::duration;

  template <typename Request>
  auto Time(Request request) {
    const auto begin = std::chrono::steady_clock::now();
    const struct Taking {
      ~Taking() { all.push_back(std::chrono::steady_clock::now() - begin); }
      std::vector<Duration>& all;
      std::chrono::steady_clock::time_point begin;
    } taking{all_, begin};
    return request();
  }
  void Add(const Latencies& other) {
    all_.insert(all_.end(), other.all_.begin(), other.all_.end());
  }
  // Prints how many there were, their median, the 99th of a hundred, and the worst.
  void Tell(const std::string& of) const;

 private:
  std::vector<Duration> all_;
};

}  // namespace corvane::testing
