#include "handheld/dom/attribute_bound.h"

namespace ce::host::dom {
namespace {

// Stands for every character beyond ASCII.
constexpr char kOther = '\x80';

}  // namespace

AttributeBound::AttributeBound(ByteLayout layout, Part part)
    : layout_(layout),
      state_(part == Part::kContent ? State::kContent : State::kSubset),
      outside_(state_),
      doctypeSeen_(part == Part::kSubset),
      subsetSeen_(part == Part::kSubset) {}

bool AttributeBound::Pass(std::string_view bytes) {
  if (layout_.width == 1) {
    for (std::size_t at = Plain(bytes, 0); at < bytes.size(); at = Plain(bytes, at + 1)) {
      Step(bytes[at]);
    }
    return state_ != State::kRefused;
  }
  for (const char byte : bytes) {
    half_ = !half_;
    if (half_) {
      firstHalf_ = byte;
      continue;
    }
    const char low = layout_.low == 0 ? firstHalf_ : byte;
    const char high = layout_.low == 0 ? byte : firstHalf_;
    Step(high == 0 ? low : kOther);
  }
  return state_ != State::kRefused;
}

std::size_t AttributeBound::Plain(std::string_view bytes, std::size_t at) const {
  switch (state_) {
    case State::kContent:
      return bytes.find('<', at);
    case State::kQuoted:
      return bytes.find(quote_, at);
    case State::kDelimited:
      return closers_ == 0 ? bytes.find(closer_, at) : at;
    case State::kRefused:
      return bytes.npos;
    default:
      return at;
  }
}

void AttributeBound::Step(char c) {
  switch (state_) {
    case State::kContent:
      if (c == '<') state_ = State::kOpen;
      break;
    case State::kSubset:
      if (c == '<') state_ = State::kOpen;
      if (c == ']') {
        outside_ = State::kContent;
        state_ = State::kDoctype;
      }
      break;
    case State::kOpen:
      Open(c);
      break;
    case State::kBang:
      Bang(c);
      break;
    case State::kBangHyphen:
      state_ = State::kRefused;
      if (c == '-') BeginDelimited('-', 2);
      break;
    case State::kDelimited:
      Delimited(c);
      break;
    case State::kTag:
      if (BeginQuoted(c)) break;
      if (c == '>') state_ = State::kContent;
      if (c == '=') CountOne();
      break;
    case State::kEndTag:
      if (c == '>') state_ = State::kContent;
      break;
    case State::kDoctype:
      Doctype(c);
      break;
    case State::kDeclaration:
      Declaration(c);
      break;
    case State::kQuoted:
      if (c == quote_) state_ = resumed_;
      break;
    case State::kRefused:
      break;
  }
}

void AttributeBound::Open(char c) {
  count_ = 0;
  if (c == '!') {
    state_ = State::kBang;
  } else if (c == '?') {
    BeginDelimited('?', 1);
  } else if (outside_ == State::kSubset) {
    state_ = State::kRefused;
  } else {
    state_ = c == '/' ? State::kEndTag : State::kTag;
  }
}

void AttributeBound::Bang(char c) {
  const bool inSubset = outside_ == State::kSubset;
  if (c == '-') {
    state_ = State::kBangHyphen;
  } else if (c == '[' && !inSubset) {
    BeginDelimited(']', 2);
  } else if (c != '[' && inSubset) {
    state_ = State::kDeclaration;
  } else if (c == 'D' && !doctypeSeen_) {
    doctypeSeen_ = true;
    state_ = State::kDoctype;
  } else {
    state_ = State::kRefused;
  }
}

void AttributeBound::Delimited(char c) {
  if (c == closer_) {
    if (closers_ < closersNeeded_) ++closers_;
    return;
  }
  if (c == '>' && closers_ == closersNeeded_) state_ = outside_;
  closers_ = 0;
}

void AttributeBound::Doctype(char c) {
  if (BeginQuoted(c)) return;
  if (c == '>') state_ = State::kContent;
  if (c != '[') return;
  outside_ = State::kSubset;
  state_ = subsetSeen_ ? State::kRefused : State::kSubset;
  subsetSeen_ = true;
}

void AttributeBound::Declaration(char c) {
  // A parameter entity may not be referred to here, but the parser would let one that is itself
  // within another bring in parts of the declaration uncounted.
  if (percent_ && c != ' ' && c != '\t' && c != '\r' && c != '\n') {
    state_ = State::kRefused;
    return;
  }
  percent_ = c == '%';
  if (BeginQuoted(c)) return;
  if (c == '>') state_ = State::kSubset;
  if (c == '|' || c == ',') CountOne();
}

void AttributeBound::BeginDelimited(char closer, int closers) {
  state_ = State::kDelimited;
  closer_ = closer;
  closersNeeded_ = closers;
  closers_ = 0;
}

bool AttributeBound::BeginQuoted(char c) {
  if (c != '"' && c != '\'') return false;
  quote_ = c;
  resumed_ = state_;
  state_ = State::kQuoted;
  return true;
}

void AttributeBound::CountOne() {
  if (++count_ > kMaxAttributes) state_ = State::kRefused;
}

}  // namespace ce::host::dom
