#include "agent/core/corvane_stream.h"

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

ce::HRESULT CorvaneStream::Write(const void* buffer, ce::DWORD count, ce::DWORD* countWritten) {
  LOG(u"CorvaneStream::Write for %ld bytes", count);
  ce::HRESULT status = ce::S_OK;
  ce::INT sent = ce::send(socket_, buffer, static_cast<ce::INT>(count), 0);
  if (sent == ce::SOCKET_ERROR) {
    status = ce::LastErrorStatus();
    sent = 0;
    ended_ = true;
  }
  if (countWritten) *countWritten = static_cast<ce::DWORD>(sent);
  return status;
}

void CorvaneStream::Release() {
  LOG(u"CorvaneStream::Release");
  if (socket_ == 0) return;
  ce::closesocket(socket_);
  socket_ = 0;
}

ce::HRESULT WriteBlock(CorvaneStream* stream, const void* block, ce::DWORD bytes) {
  const ce::BYTE* next = static_cast<const ce::BYTE*>(block);
  ce::HRESULT status = ce::S_OK;
  while (bytes > 0) {
    ce::DWORD written = 0;
    status = stream->Write(next, bytes, &written);
    if (status != ce::S_OK || written == 0 || written > bytes) break;
    next += written;
    bytes -= written;
  }
  return status;
}

ce::HRESULT WriteWord(CorvaneStream* stream, ce::DWORD word) {
  const ce::BYTE bytes[4] = {static_cast<ce::BYTE>(word), static_cast<ce::BYTE>(word >> 8),
                             static_cast<ce::BYTE>(word >> 16), static_cast<ce::BYTE>(word >> 24)};
  return WriteBlock(stream, bytes, sizeof(bytes));
}

}  // namespace corvane
