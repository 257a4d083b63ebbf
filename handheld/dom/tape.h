// A document as it was read: a few bytes a node, of which nodes are made when somebody asks for
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <string_view>

namespace ce::host::dom {

enum class NodeKind : std::uint8_t {
  kDocument,
  kElement,
  kText,
  kCdata,
  kComment,
  kInstruction,
  kAttribute,
};

// An array that grows in place where the host can do that. Of plain values.
template <typename T>
class Growing {
 public:
  Growing() = default;
  Growing(const Growing&) = delete;
  Growing& operator=(const Growing&) = delete;
  ~Growing() { std::free(data_); }

  T* data() const { return data_; }
  std::size_t size() const { return size_; }
  // Room for so many behind the last. Throws std::bad_alloc.
  T* Extend(std::size_t count) {
    if (count > capacity_ - size_) Grow(count);
    T* const added = data_ + size_;
    size_ += count;
    return added;
  }
  void Cut(std::size_t size) { size_ = size; }

 private:
  void Grow(std::size_t count) {
    constexpr std::size_t kFirst = 1024;
    std::size_t wanted = capacity_ == 0 ? kFirst : 2 * capacity_;
    if (wanted - size_ < count) wanted = size_ + count;
    void* const grown = std::realloc(data_, wanted * sizeof(T));
    if (!grown) throw std::bad_alloc();
    data_ = static_cast<T*>(grown);
    capacity_ = wanted;
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// The nodes lie in document order: the document, then each with its attributes and its children
// behind it. A cell's number names its node.
class Tape {
 public:
  using Cell = std::uint32_t;
  static constexpr Cell kDocument = 0;
  static constexpr Cell kNone = kDocument;  // nobody's child
  static constexpr std::size_t kCellBytes = 8;
  // More units of text, terminators among them, than a cell can point into.
  static constexpr std::size_t kMaxUnits = std::size_t{1} << 29;

  Tape() { Add(NodeKind::kDocument, 0); }

  NodeKind KindOf(Cell cell) const { return static_cast<NodeKind>(cells_.data()[cell].kind); }
  // The name, or the data of a kind without one.
  std::u16string_view TextOf(Cell cell) const { return At(cells_.data()[cell].text); }
  // The value of an attribute, the data of an instruction.
  std::u16string_view SecondOf(Cell cell) const { return At(cells_.data()[cell].end); }
  // kNone when there is none.
  Cell FirstAttribute(Cell element) const { return AttributeAt(element + 1); }
  Cell NextAttribute(Cell attribute) const { return AttributeAt(attribute + 1); }
  Cell FirstChild(Cell parent) const {
    Cell cell = parent + 1;
    while (AttributeAt(cell) != kNone) ++cell;
    return cell < EndOf(parent) ? cell : kNone;
  }
  Cell NextChild(Cell child, Cell parent) const {
    const Cell next = EndOf(child);
    return next < EndOf(parent) ? next : kNone;
  }
  std::size_t bytes() const {
    return cells_.size() * kCellBytes + units_.size() * sizeof(char16_t);
  }

  // For who builds it. All may throw std::bad_alloc, the first also std::length_error when there
  // is too much of it. Texts are named by where they begin.
  using Place = std::uint32_t;
  Cell Add(NodeKind kind, Place text);
  Cell Add(NodeKind kind, Place text, Place second);
  // An element or the document, once all that is in it has been added.
  void End(Cell cell) { cells_.data()[cell].end = static_cast<Cell>(cells_.size()); }
  Place Here() const { return static_cast<Place>(units_.size()); }
  char16_t* ExtendText(std::size_t units) { return units_.Extend(units); }
  void EndText() { *units_.Extend(1) = 0; }
  void CutText(Place place) { units_.Cut(place); }
  std::u16string_view TextFrom(Place place) const {
    return {units_.data() + place, units_.size() - place};
  }

 private:
  struct Entry {
    std::uint32_t kind : 3;
    std::uint32_t text : 29;
    std::uint32_t end;  // behind all that is in it; of an attribute or instruction, its second text
  };
  static_assert(sizeof(Entry) == kCellBytes);

  bool Has(Cell cell) const { return cell < cells_.size(); }
  bool HasInside(Cell cell) const {
    return KindOf(cell) == NodeKind::kElement || KindOf(cell) == NodeKind::kDocument;
  }
  Cell EndOf(Cell cell) const { return HasInside(cell) ? cells_.data()[cell].end : cell + 1; }
  Cell AttributeAt(Cell cell) const {
    return Has(cell) && KindOf(cell) == NodeKind::kAttribute ? cell : kNone;
  }
  std::u16string_view At(Place place) const { return units_.data() + place; }

  Growing<Entry> cells_;
  Growing<char16_t> units_;
};

}  // namespace ce::host::dom
