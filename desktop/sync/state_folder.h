// FOLDER/.corvane: where a synchronisation keeps what it remembers, for the owner alone.
#pragma once

#include <filesystem>
#include <string_view>

namespace desktop {

inline constexpr std::string_view kStateName = ".corvane";

class StateFolder {
 public:
  enum class Use {
    kRun,
    kLook,  // changes nothing: what is written goes to a copy, and with it
  };

  // Held by one process at a time. Throws Error when another one has it, or it cannot be made.
  StateFolder(const std::filesystem::path& folder, Use use);
  ~StateFolder();
  StateFolder(const StateFolder&) = delete;
  StateFolder& operator=(const StateFolder&) = delete;

  [[nodiscard]] std::filesystem::path memory() const { return root_ / "memory.db"; }
  [[nodiscard]] std::filesystem::path mapping() const { return root_ / "map.json"; }
  [[nodiscard]] std::filesystem::path history() const { return kept_ / "history"; }
  [[nodiscard]] std::filesystem::path trash() const { return kept_ / "trash"; }
  // Whether something has been synchronised here before.
  [[nodiscard]] bool hasHistory() const;

 private:
  void Lock(Use use);
  void CopyState();
  void Release();

  std::filesystem::path kept_;  // the folder's own
  std::filesystem::path root_;  // or a copy
  int lock_ = -1;
};

}  // namespace desktop
