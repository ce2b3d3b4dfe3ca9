// CKivTextResources: the string table of a module: string identifiers and the texts
// they stand for in the application's own language. A text is shown through Xlate, so
// a loaded language file decides what the user reads.
#pragma once

#include <unordered_map>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"

// One entry of a static string table.
struct TKivTextResource {
    unsigned int id;
    const wchar_t* text;
};

class CKivTextResources : public SharedHeapObject {
public:
    CKivTextResources() = default;
    // Adds the entries of a static table (a later entry with the same identifier wins).
    CKivTextResources(const TKivTextResource* table, int count) { AddTable(table, count); }

    // Adds or replaces the text of an identifier; a null text removes it.
    void Add(unsigned int id, const wchar_t* text);
    void AddTable(const TKivTextResource* table, int count);

    bool Contains(unsigned int id) const { return texts_.find(id) != texts_.end(); }
    int GetCount() const { return static_cast<int>(texts_.size()); }
    // The text as written in the table; null for an unknown identifier.
    const wchar_t* GetSource(unsigned int id) const;
    // The text as the user reads it: Xlate of the source. False, with `text` emptied, for
    // an unknown identifier.
    bool Load(unsigned int id, CKivStringT& text) const;

private:
    std::unordered_map<unsigned int, CKivStringT> texts_;
};
