// What the rest of the handheld asks of its windows.
#pragma once

#include <cstddef>

namespace ce::host {

// The class of the RichInk control, there between the two. A program's own class of that name stays
// what it is, and a control lives on without its class. May throw std::bad_alloc.
void AddRichInkClass();
void RemoveRichInkClass();

// Windows that the calling thread has.
std::size_t WindowsOfThread();

}  // namespace ce::host
