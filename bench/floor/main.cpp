// The floors: what no program that does the same work on the same store, disk and wire can be much
// faster than. `compare` runs them.
//
//   bench_floor down KIND STORE            serves downloads
//   bench_floor up KIND STORE CHUNKS       inserts the chunks; prints the seconds and what it used
//   bench_floor push STORE CHUNKS VCARDS   the same, and reads the vCards first
//   bench_floor request                    serves the time
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/floor/serve.h"
#include "bench/floor/up.h"
#include "common/formats/vcard/vcard.h"

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Seconds, seconds of CPU, and the peak of its memory in KiB, without what ran ahead.
class Expense {
 public:
  Expense() : begin_(std::chrono::steady_clock::now()), cpuBefore_(Cpu()) {}
  void Print() const {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin_;
    std::printf("%.9f %.9f %ld\n", passed.count(), Cpu() - cpuBefore_, Usage().ru_maxrss);
  }

 private:
  static rusage Usage() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
  }
  static double Cpu() {
    const rusage usage = Usage();
    return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  }

  const std::chrono::steady_clock::time_point begin_;
  const double cpuBefore_;
};

void Insert(const std::string& kind, const std::string& store, const std::string& chunks) {
  floors::Database database(store);
  const bench::ChunkFile file(chunks);
  const Expense expense;
  floors::InsertAll(database, kind, file);
  expense.Print();
}

void ReadAndInsert(const std::string& store, const std::string& chunks, const std::string& vCards) {
  const Expense expense;
  std::ifstream input(vCards, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(input), {}};
  const formats::VCardFile read = formats::ReadVCards(bytes);
  floors::Database database(store);
  const bench::ChunkFile file(chunks);
  floors::InsertAll(database, "contacts", file);
  expense.Print();
  std::fprintf(stderr, "%zu vCards\n", read.contacts.size());
}

int Run(const std::vector<std::string>& words) {
  const std::string what = words.empty() ? "" : words[0];
  if (what == "down" && words.size() == 3) floors::ServeDownloads(words[1], words[2]);
  if (what == "request" && words.size() == 1) floors::ServeRequests();
  if (what == "up" && words.size() == 4) {
    Insert(words[1], words[2], words[3]);
  } else if (what == "push" && words.size() == 4) {
    ReadAndInsert(words[1], words[2], words[3]);
  } else {
    std::fprintf(stderr, "bench_floor: see bench/floor/main.cpp for what it can do\n");
    return 2;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run({argv + 1, argv + argc});
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "bench_floor: %s\n", problem.what());
    return 1;
  }
}
