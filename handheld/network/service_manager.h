// What the service manager that started this process is told, if one did.
#pragma once

#include <cstdio>
#include <string_view>

namespace ce::host {

// A state such as "READY=1". Nothing where no service manager waits for it.
void TellServiceManager(std::string_view state);

enum class Severity { kError = 3, kWarning = 4, kInformation = 6 };

// Prints a whole line, with the severity in front where a journal reads the stream.
void SayLine(std::FILE* to, Severity severity, std::string_view line);

}  // namespace ce::host
