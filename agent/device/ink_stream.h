// What the control's stream callbacks read from and write to. The record's cookie is the address of
// one of these; the callbacks never fail.
#pragma once

#include "platform/windows.h"

namespace corvane {

struct ReadState {
  const ce::BYTE* start = nullptr;
  ce::DWORD position = 0;
  ce::DWORD size = 0;
};

// Without a start it only counts.
struct WriteState {
  ce::BYTE* start = nullptr;
  ce::DWORD position = 0;
  ce::DWORD capacity = 0;
};

// Gives what is left, as far as it is asked for; 0 bytes when nothing is.
ce::DWORD ReadNote(ce::DWORD_PTR cookie, ce::BYTE* buffer, ce::LONG bytes, ce::LONG* moved);
// Takes what there is room for.
ce::DWORD WriteNote(ce::DWORD_PTR cookie, ce::BYTE* buffer, ce::LONG bytes, ce::LONG* moved);

template <typename State>
ce::EDITSTREAM StreamOver(State& state, ce::EDITSTREAMCALLBACK callback) {
  return {reinterpret_cast<ce::DWORD_PTR>(&state), 0, callback};
}

}  // namespace corvane
