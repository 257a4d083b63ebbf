// What other programs can look up in the agent's program file.
#include <elf.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/support/paths.h"

namespace corvane::testing {
namespace {

template <typename T>
T At(const std::string& file, std::size_t offset) {
  T value{};
  std::memcpy(&value, file.substr(offset, sizeof(T)).c_str(), sizeof(T));
  return value;
}

Elf64_Shdr SectionAt(const std::string& file, std::size_t index) {
  const auto header = At<Elf64_Ehdr>(file, 0);
  return At<Elf64_Shdr>(file, header.e_shoff + index * header.e_shentsize);
}

// An entry of the dynamic symbol table.
std::optional<Elf64_Sym> DynamicSymbol(const std::string& file, const std::string& name) {
  const auto header = At<Elf64_Ehdr>(file, 0);
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    const Elf64_Shdr section = SectionAt(file, i);
    if (section.sh_type != SHT_DYNSYM) continue;
    const Elf64_Shdr names = SectionAt(file, section.sh_link);
    for (std::size_t at = 0; at < section.sh_size; at += sizeof(Elf64_Sym)) {
      const auto symbol = At<Elf64_Sym>(file, section.sh_offset + at);
      if (name == file.data() + names.sh_offset + symbol.st_name) return symbol;
    }
  }
  return std::nullopt;
}

TEST(AgentSymbols, ExportsTheDaylightSwitchAsData) {
  std::ifstream stream(ProgramPath("corvane"), std::ios::binary);
  const std::string file{std::istreambuf_iterator<char>(stream), {}};
  ASSERT_EQ(file.substr(0, SELFMAG), ELFMAG);
  ASSERT_EQ(file.at(EI_CLASS), ELFCLASS64);
  const auto symbol = DynamicSymbol(file, "g_bUseDST");
  ASSERT_TRUE(symbol.has_value());
  EXPECT_EQ(ELF64_ST_TYPE(symbol->st_info), STT_OBJECT);
  EXPECT_EQ(ELF64_ST_BIND(symbol->st_info), STB_GLOBAL);
  EXPECT_NE(symbol->st_shndx, SHN_UNDEF) << "defined here";
  EXPECT_GE(symbol->st_size, sizeof(std::int32_t)) << "a sanitizer puts more around it";
  EXPECT_FALSE(DynamicSymbol(file, "g_bUseNothing").has_value());
}

}  // namespace
}  // namespace corvane::testing
