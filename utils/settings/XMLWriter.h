// CXMLWriterBase writes an XML document forward only, with lazy start tags, and can
// reopen a document inside its root element; CXMLWriter adds the running checksum of
// the append-only history documents. Files are UTF-16LE with the byte-order mark.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"
#include "platform/mfc/File.h"

class CXMLWriterBase : public SharedHeapObject {
public:
    CXMLWriterBase();

    // Opens or creates the document and places the writer where content continues.
    bool Open(const CKivStringT& path, bool& created);
    bool ReOpen(const CKivStringT& path);
    void Close();

    void WriteStartDocument() {}
    void WriteEndDocument() {}
    void WriteStartElement(const CKivStringT& name);
    void WriteEndElement();
    void WriteString(const CKivStringT& text);
    void WriteElementString(const CKivStringT& name, const CKivStringT& text);

    // Steps back over the end tag `name` at the end of the file and reopens that element.
    bool RewindLastTag(const CKivStringT& name);

    CXMLWriterBase(const CXMLWriterBase&) = delete;
    CXMLWriterBase& operator=(const CXMLWriterBase&) = delete;

protected:
    virtual void Write(const CKivStringT& text);
    virtual void InitOnOpen(bool isNewFile);

public:
    virtual ~CXMLWriterBase();

protected:
    void WriteLine(const CKivStringT& text);
    void FlushElementIfNeeded();
    bool IsOpen() const;
    // Writes bytes that bypass Write (the byte-order mark).
    void WriteRawBytes(const void* bytes, unsigned count);
    // Where the last line before `end` starts (just after its CR LF, an even offset) when
    // that line stops inside a tag (a '<' with no '>' after it); -1 when it does not,
    // when no CR LF precedes it, or when the file cannot be read.
    LONG TornLineStart(LONG end);
    // Sends what the current call has produced to the file in one write.
    void FlushPending();
    std::string_view PendingBytes() const { return m_pending; }

    // Each public call hands its bytes to the operating system in one write before it
    // returns; nothing is kept that a crash of the process could lose.
    class CallScope {
    public:
        explicit CallScope(CXMLWriterBase& w) : w_(w) { ++w_.m_callDepth; }
        ~CallScope() {
            if (--w_.m_callDepth == 0) w_.FlushPending();
        }
        CallScope(const CallScope&) = delete;
        CallScope& operator=(const CallScope&) = delete;

    private:
        CXMLWriterBase& w_;
    };

    int m_bytesPerChar = 2;
    bool m_startTagPending = false;
    CKivArray<CKivStringT> m_elements;
    int m_depth = 0;
    int m_writtenCount = 0;
    CFile m_file;
    // Where the file is cut before the next bytes are written: the start of a torn last
    // line that the rewind stepped back over; -1 for none.
    LONG m_cutAt = -1;

private:
    std::string m_pending;
    CKivStringT m_tag;  // reused for each tag, so writing a tag allocates nothing
    int m_callDepth = 0;
};

class CXMLWriter : public CXMLWriterBase {
public:
    CXMLWriter();

    // Writes the running checksum as a CheckSum element.
    void WriteCheckSum();
    // Takes the running checksum back from the CheckSum element before the current
    // position; false when there is none that reads.
    bool RestoreCheckSum();

    std::uint32_t GetCheckSum() const { return m_checkSum; }

private:
    void Write(const CKivStringT& text) override;
    void InitOnOpen(bool isNewFile) override;

public:
    ~CXMLWriter() override;

private:
    void BeginDocument();
    void WriteCheckSum(unsigned value);
    unsigned ContinueCheckSum(const CKivStringT& text, unsigned sum);
    unsigned FoldEncoded(std::string_view utf16le, unsigned sum);

    std::uint32_t m_checkSum = 0;
    int m_lane = 0;
};
