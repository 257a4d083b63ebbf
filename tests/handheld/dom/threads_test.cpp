#include <string>
#include <thread>
#include <vector>

#include "tests/handheld/dom/dom_support.h"

namespace ce::testing {
namespace {

class DomThreads : public DomTest {};

// Loads good and bad documents in turn and saves the good ones; returns how many came out wrong.
int Work(int thread) {
  int wrong = 0;
  const Document document = MakeDocument();
  for (int i = 0; i < 200; ++i) {
    const std::string text = std::to_string(thread) + "." + std::to_string(i);
    const std::string root = "<r a=\"" + text + "\"><b>" + text + "é</b></r>";
    const std::string good = "<r a='" + text + "'> <b>" + text + "é</b></r>";
    if (LoadInto(document, good) != S_OK || Saved(document) != root) ++wrong;
    if (LoadInto(document, good + "<") != E_FAIL) ++wrong;
    const std::string latin = "<?XML version='1.0' encoding='windows-1252'?><r a='" + text +
                              "'><b>" + text + "\xE9</b></r>";
    if (LoadInto(document, latin) != S_OK ||
        Saved(document) != "<?XML version=\"1.0\" encoding=\"UTF-8\"?>" + root) {
      ++wrong;
    }
  }
  return wrong;
}

TEST_F(DomThreads, LoadDocumentsAtTheSameTime) {
  constexpr int kThreads = 8;
  std::vector<int> wrong(kThreads, -1);
  {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&wrong, i] { wrong[i] = Work(i); });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(wrong, std::vector<int>(kThreads, 0));
}

}  // namespace
}  // namespace ce::testing
