#include "agent/core/corvane_stream.h"

#include <cstring>
#include <utility>

#include "agent/log/log.h"
#include "platform/status.h"

namespace corvane {

CorvaneStream::~CorvaneStream() {
  if (socket_ != 0) Release();
}

void CorvaneStream::Attach(ce::SOCKET socket) {
  socket_ = socket;
  ended_ = false;
}

ce::HRESULT CorvaneStream::Read(void* buffer, ce::DWORD count, ce::DWORD* countRead) {
  LOG(u"CorvaneStream::Read");
  ce::HRESULT status = ce::S_OK;
  ce::INT received = ce::recv(socket_, buffer, static_cast<ce::INT>(count), 0);
  if (received == ce::SOCKET_ERROR) {
    status = ce::LastErrorStatus();
    received = 0;
    ended_ = true;
  } else if (received == 0 && count > 0) {
    ended_ = true;
  }
  if (countRead) *countRead = static_cast<ce::DWORD>(received);
  return status;
}

ce::HRESULT CorvaneStream::Put(const void* buffer, ce::DWORD count, ce::DWORD* countWritten,
                               ce::INT flags) {
  LOG(u"CorvaneStream::Write for %ld bytes", count);
  if (!holding_) return Send(buffer, count, countWritten, flags);
  const bool fits = count <= kMostHeld - heldCount_;
  if (fits) {
    std::memcpy(held_.data() + heldCount_, buffer, count);
    heldCount_ += count;
  }
  if (countWritten) *countWritten = fits ? count : 0;
  return fits ? ce::S_OK : ce::E_OUTOFMEMORY;
}

ce::HRESULT CorvaneStream::Send(const void* buffer, ce::DWORD count, ce::DWORD* countSent,
                                ce::INT flags) {
  ce::HRESULT status = ce::S_OK;
  ce::INT sent = ce::send(socket_, buffer, static_cast<ce::INT>(count), flags);
  if (sent == ce::SOCKET_ERROR) {
    status = ce::LastErrorStatus();
    sent = 0;
    ended_ = true;
  }
  if (countSent) *countSent = static_cast<ce::DWORD>(sent);
  return status;
}

void CorvaneStream::Hold() {
  holding_ = true;
}

ce::HRESULT CorvaneStream::SendHeld() {
  holding_ = false;
  const ce::DWORD count = std::exchange(heldCount_, 0);
  ce::HRESULT status = ce::S_OK;
  ce::DWORD sent = 0;
  while (sent < count) {
    ce::DWORD more = 0;
    status = Send(held_.data() + sent, count - sent, &more, 0);
    if (status != ce::S_OK || more == 0) break;
    sent += more;
  }
  return status;
}

void CorvaneStream::DropHeld() {
  holding_ = false;
  heldCount_ = 0;
}

void CorvaneStream::Release() {
  LOG(u"CorvaneStream::Release");
  DropHeld();
  if (socket_ == 0) return;
  ce::closesocket(socket_);
  socket_ = 0;
}

namespace {

using Writer = ce::HRESULT (CorvaneStream::*)(const void*, ce::DWORD, ce::DWORD*);

ce::HRESULT WriteAll(CorvaneStream* stream, const void* block, ce::DWORD bytes, Writer write) {
  const ce::BYTE* next = static_cast<const ce::BYTE*>(block);
  ce::HRESULT status = ce::S_OK;
  while (bytes > 0) {
    ce::DWORD written = 0;
    status = (stream->*write)(next, bytes, &written);
    if (status != ce::S_OK || written == 0 || written > bytes) break;
    next += written;
    bytes -= written;
  }
  return status;
}

ce::HRESULT WriteBytesOf(CorvaneStream* stream, ce::DWORD word, Writer write) {
  const ce::BYTE bytes[4] = {static_cast<ce::BYTE>(word), static_cast<ce::BYTE>(word >> 8),
                             static_cast<ce::BYTE>(word >> 16), static_cast<ce::BYTE>(word >> 24)};
  return WriteAll(stream, bytes, sizeof(bytes), write);
}

}  // namespace

ce::HRESULT WriteBlock(CorvaneStream* stream, const void* block, ce::DWORD bytes) {
  return WriteAll(stream, block, bytes, &CorvaneStream::Write);
}

ce::HRESULT WriteWord(CorvaneStream* stream, ce::DWORD word) {
  return WriteBytesOf(stream, word, &CorvaneStream::Write);
}

ce::HRESULT WriteWordAhead(CorvaneStream* stream, ce::DWORD word) {
  return WriteBytesOf(stream, word, &CorvaneStream::WritePart);
}

}  // namespace corvane
