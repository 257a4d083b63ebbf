// Writes a program's manual pages and completion from what the program says of itself:
//   corvane-reference PROGRAM VERSION PROSE FOLDER < description
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "packaging/reference/completion.h"
#include "packaging/reference/manual.h"

namespace {

namespace fs = std::filesystem;

std::string ReadProse(const fs::path& path) {
  std::ifstream file(path);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file) throw std::runtime_error(path.string() + " cannot be read");
  return text;
}

void Write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path);
  file << text;
  if (!file.flush()) throw std::runtime_error(path.string() + " cannot be written");
}

void WriteReference(const reference::Program& program, const std::string& prose,
                    const fs::path& folder) {
  for (const reference::Page& page : reference::ManualPages(program, prose))
    Write(folder / "man1" / page.name, page.text);
  Write(folder / "bash" / program.name, reference::BashCompletion(program));
  Write(folder / "zsh" / ("_" + program.name), reference::ZshCompletion(program));
  Write(folder / "fish" / (program.name + ".fish"), reference::FishCompletion(program));
}

}  // namespace

std::string reference::Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string reference::FunctionName(const Program& program) {
  std::string name = "_" + program.name;
  std::ranges::replace(name, '-', '_');
  return name;
}

int main(int argc, char** argv) {
  try {
    if (argc != 5) throw std::runtime_error("it wants PROGRAM VERSION PROSE FOLDER");
    const fs::path folder = argv[4];
    fs::remove_all(folder);  // pages of commands that are gone
    WriteReference(reference::Read(std::cin, argv[1], argv[2]), ReadProse(argv[3]), folder);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "corvane-reference: " << error.what() << '\n';
    return 1;
  }
}
