// CKivArray: the family's growable array, with the member names the library uses.
// Out-of-range indexes are the caller's error, as with the original; GetAt checks them
// in debug builds.
#pragma once

#include <cassert>
#include <cstddef>
#include <utility>
#include <vector>

template <class T>
class CKivArray {
public:
    CKivArray() = default;

    int GetSize() const { return static_cast<int>(items_.size()); }
    int GetCount() const { return GetSize(); }
    bool IsEmpty() const { return items_.empty(); }
    int GetUpperBound() const { return GetSize() - 1; }

    void SetSize(int size) { items_.resize(size < 0 ? 0 : static_cast<std::size_t>(size)); }

    const T& GetAt(int i) const {
        assert(i >= 0 && i < GetSize());
        return items_[static_cast<std::size_t>(i)];
    }
    T& GetAt(int i) {
        assert(i >= 0 && i < GetSize());
        return items_[static_cast<std::size_t>(i)];
    }
    void SetAt(int i, const T& v) { GetAt(i) = v; }
    const T& operator[](int i) const { return GetAt(i); }
    T& operator[](int i) { return GetAt(i); }
    T* GetData() { return items_.data(); }
    const T* GetData() const { return items_.data(); }

    int Add(const T& v) {
        items_.push_back(v);
        return GetSize() - 1;
    }
    int Add(T&& v) {
        items_.push_back(std::move(v));
        return GetSize() - 1;
    }
    int Append(const CKivArray& other) {
        const int first = GetSize();
        items_.insert(items_.end(), other.items_.begin(), other.items_.end());
        return first;
    }
    void Copy(const CKivArray& other) { items_ = other.items_; }

    void InsertAt(int i, const T& v, int count = 1) {
        if (i < 0) i = 0;
        if (i > GetSize()) items_.resize(static_cast<std::size_t>(i));
        items_.insert(items_.begin() + i, static_cast<std::size_t>(count < 0 ? 0 : count), v);
    }
    void RemoveAt(int i, int count = 1) {
        if (i < 0 || count <= 0 || i >= GetSize()) return;
        const int end = (count > GetSize() - i) ? GetSize() : i + count;
        items_.erase(items_.begin() + i, items_.begin() + end);
    }
    void RemoveAll() { items_.clear(); }

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<T> items_;
};
