// The notes of a handheld as text.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace tool {

using NoteVisitor = std::function<void(const std::string& path, const std::string& text)>;
using NoteProblem = std::function<void(const std::string& problem)>;

// Each below "\My Documents" of the files' root, by its path as the handheld writes it, as UTF-8;
// ink as the text that was written. One that cannot be read is told with its path. Throws
// files::Error for a folder that cannot be read.
void ForEachNote(const std::filesystem::path& root, const NoteVisitor& visit,
                 const NoteProblem& tell);

}  // namespace tool
