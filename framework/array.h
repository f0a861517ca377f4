// CArray: a growing array of values in one block.
//
// Indices go from 0 to GetCount() - 1. An index outside raises std::out_of_range and touches no memory. The array owns
// its elements; pointers to them are valid until the size changes. One thread at a time may use an array. ARG is the
// parameter type for elements, usually T or const T&.
#pragma once

#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "framework/elements.h"

template <class T, class ARG = const T&>
class CArray : public CObject {
 public:
  CArray() = default;

  LONGLONG GetSize() const { return LONGLONG(elements_.size()); }
  LONGLONG GetCount() const { return LONGLONG(elements_.size()); }
  bool IsEmpty() const { return elements_.empty(); }
  // The highest index; -1 for an empty array.
  LONGLONG GetUpperBound() const { return GetSize() - 1; }

  // Shrinks or extends; new elements are value-initialised. A negative size raises std::out_of_range. growBy is ignored
  // and kept for existing callers.
  void SetSize(LONGLONG size, LONGLONG growBy = -1) {
    static_cast<void>(growBy);
    if (size < 0) throw std::out_of_range("CArray: negative size");
    elements_.resize(std::size_t(size));
  }
  void RemoveAll() { elements_ = {}; }
  void FreeExtra() { elements_.shrink_to_fit(); }

  const T& GetAt(LONGLONG index) const { return elements_.at(std::size_t(index)); }
  T& GetAt(LONGLONG index) { return elements_.at(std::size_t(index)); }
  const T& operator[](LONGLONG index) const { return elements_.at(std::size_t(index)); }
  T& operator[](LONGLONG index) { return elements_.at(std::size_t(index)); }
  T& ElementAt(LONGLONG index) { return elements_.at(std::size_t(index)); }
  void SetAt(LONGLONG index, ARG element) { elements_.at(std::size_t(index)) = element; }
  // As SetAt, but extends the array first if the index is at or after the end.
  void SetAtGrow(LONGLONG index, ARG element) {
    const T copy = element;  // the argument may be an element of this array
    if (index >= GetSize()) SetSize(index + 1);
    SetAt(index, copy);
  }

  // The elements, one after the other; null for an empty array. Valid until the size changes.
  T* GetData() { return elements_.empty() ? nullptr : elements_.data(); }
  const T* GetData() const { return elements_.empty() ? nullptr : elements_.data(); }
  auto begin() const { return elements_.begin(); }
  auto end() const { return elements_.end(); }

  // Both return the index of the first added element.
  LONGLONG Add(ARG element) {
    elements_.push_back(element);
    return GetUpperBound();
  }
  LONGLONG Append(const CArray& other) {
    const LONGLONG first = GetSize();
    const std::size_t count = other.elements_.size();  // the other may be this array
    elements_.reserve(elements_.size() + count);
    for (std::size_t i = 0; i < count; ++i) elements_.push_back(other.elements_[i]);
    return first;
  }
  void Copy(const CArray& other) { elements_ = other.elements_; }

  // Inserts count copies before the index. An index after the end first extends the array to that index.
  void InsertAt(LONGLONG index, ARG element, LONGLONG count = 1) {
    if (index < 0 || count < 0) throw std::out_of_range("CArray: negative index or count");
    const T copy = element;
    if (index > GetSize()) SetSize(index);
    elements_.insert(elements_.begin() + index, std::size_t(count), copy);
  }
  void RemoveAt(LONGLONG index, LONGLONG count = 1) {
    if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index)
      throw std::out_of_range("CArray: nothing there to remove");
    elements_.erase(elements_.begin() + index, elements_.begin() + index + count);
  }

  // The count, then the elements (framework/elements.h). Loading replaces the content. If fewer bytes are left than the
  // count needs, loading raises endOfFile and leaves the array unchanged; if an element raises, the array has the
  // elements read so far.
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar.WriteCount(elements_.size());
      if constexpr (kStoredRaw<T>) {
        ar.Write(elements_.data(), elements_.size() * sizeof(T));
      } else {
        for (const T& element : elements_) StoreElement(ar, element);
      }
      return;
    }
    const ULONGLONG count = ar.ReadCount(kElementBytes<T>);
    if constexpr (kStoredRaw<T>) {
      elements_.resize(std::size_t(count));
      ar.EnsureRead(elements_.data(), elements_.size() * sizeof(T));
    } else {
      elements_.clear();  // no resize: an element may need far more memory than bytes in the archive
      for (ULONGLONG i = 0; i < count; ++i) LoadElement(ar, elements_.emplace_back());
    }
  }

 private:
  static_assert(!std::is_same_v<T, bool>, "take BOOL or BYTE: bool has no addressable elements here");

  std::vector<T> elements_;
};
