// What becomes of what a card says and a contact has no field for.
#pragma once

namespace formats {

// What becomes of e-mails, numbers, chat addresses, nicknames and labels that find no place.
enum class Overflow {
  kLeftOut,
  kNote,         // they go to the end of the note, and come back from there
  kNoteForWire,  // and so do the numbers of slots that the wire does not carry
};

}  // namespace formats
