// The family's small XML helpers: CXmlParserBase forms tags and attributes for writers,
// CXmlParser tokenizes a whole file for readers, and kiv_formats::WriteString writes
// text to a stream in the encoding of the family's XML files (UTF-8 without a mark).
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"

class CXmlParserBase : public SharedHeapObject {
public:
    // Flags of OpenTag and CloseTag.
    enum ETagFlag : int {
        eTagOpenForAttributes = 1,  // a start tag without its '>': attributes follow
        eTagLineBreak = 2,          // CR LF after the tag
    };
    // The kinds of tag a writer asks TagTypeFlag for; with them a settings file has one
    // element a line: a start tag with attributes, its content, and an end tag that ends
    // the line.
    enum ETagType : int {
        eTagInline = 0,          // no flags
        eTagOwnLine = 1,         // eTagLineBreak
        eTagWithAttributes = 2,  // eTagOpenForAttributes
        eTagEndsLine = 3,        // eTagLineBreak
    };

    virtual ~CXmlParserBase() = default;

    static int TagTypeFlag(int tagType);
    // OpenTag("group", 2) is "<group>" CR LF; OpenTag("group", 1) is "<group".
    static CKivStringT OpenTag(const wchar_t* name, int flags);
    // CloseTag("group", 2) is "</group>" CR LF.
    static CKivStringT CloseTag(const wchar_t* name, int flags);
    // FormAttrib("name", "a&b", false) is ` name="a&amp;b"`; closeTag appends '>'.
    // Every character round-trips through ReadAttrib.
    static CKivStringT FormAttrib(const wchar_t* name, const wchar_t* value, bool closeTag);
};

class CXmlParser : public CXmlParserBase {
public:
    // Files larger than this are refused rather than read into memory.
    static constexpr size_t kMaxFileBytes = 64u << 20;

    // Reads the whole file (UTF-8 with or without mark, UTF-16LE with mark, else Latin-1)
    // into a new parser: 0 on success, else a Win32 error code and a null parser. The
    // caller deletes the parser (or calls Destroy).
    static int Initialize(const wchar_t* path, CXmlParser*& parser);
    static void Destroy(CXmlParser*& parser);

    explicit CXmlParser(std::wstring text) : text_(std::move(text)) {}

    // The next tag: a start tag gives its name, its attribute text as it stands and the
    // character content up to the next tag, as it stands; an end tag gives "/" and its
    // name; a self-closed tag gives a start tag and then its end tag. Declarations,
    // comments and processing instructions are passed over, and a '<' that begins no
    // well-formed tag is read as text. False when no tag is left.
    bool ReadToken(CKivStringT& tag, CKivStringT& attributes, CKivStringT& content);

    // The value of the attribute `name` (case-sensitive) with entities resolved, or ""
    // when the text holds no such attribute.
    static CKivStringT ReadAttrib(const CKivStringT& attributes, const wchar_t* name);

    // Fills `list` with the items of "[a;b;c]" (separator ';'), or with the content as one
    // item when it is not in brackets, and leaves `content` as it is. Never refuses a
    // content: every stored value must load again.
    static bool ParseValuesInBrackets(const CKivStringT& content, CKivArray<CKivStringT>& list, wchar_t separator);

private:
    enum class Kind { None, Start, End, Skip };
    struct Markup {
        Kind kind = Kind::None;
        size_t at = 0;   // the '<'
        size_t end = 0;  // just after the '>'
        size_t nameEnd = 0;
        bool selfClosed = false;
    };
    struct SearchCache {
        size_t from = std::wstring::npos;
        size_t found = std::wstring::npos;
    };
    // The first markup at or after `from`, or Kind::None at the end of the text.
    void FindMarkup(size_t from, Markup& markup);
    bool TryMarkupAt(size_t at, Markup& markup);
    bool TryTagAt(size_t at, Markup& markup) const;
    size_t Search(std::wstring_view pattern, size_t from, SearchCache& cache) const;

    std::wstring text_;
    size_t pos_ = 0;
    Markup next_;  // the markup found after the last content, if next_.at >= pos_
    bool hasNext_ = false;
    CKivStringT pendingEnd_;  // the end tag of a self-closed tag, still to be given
    mutable SearchCache piEnd_, commentEnd_, cdataEnd_, declarationEnd_;
};

namespace kiv_formats {
// Writes the text to the stream as UTF-8; false unless every byte was written.
bool WriteString(FILE* file, const CKivStringT& text);
}  // namespace kiv_formats
