#include "common/files/stream_pieces.h"

namespace files {

// Not by istream::read, for which a short piece is the end.
std::string_view ReadPiece(std::istream& in, StreamPiece& piece) {
  std::streamsize length = 0;
  try {
    length = in.rdbuf()->sgetn(piece.data(), piece.size());
  } catch (const std::ios_base::failure&) {
    in.setstate(std::ios_base::badbit);
  }
  return {piece.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

}  // namespace files
