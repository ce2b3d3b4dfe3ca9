// The error stack: the chain a message box shows, the cap, and one stack per thread.
#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"
#include "platform/win32/Win32.h"
#include "utils/runtime/ErrorStack.h"

namespace {

class ErrorStack : public ::testing::Test {
protected:
    void SetUp() override {
        CKivErrorStack::Clear();
        CKivErrorStack::SetCap(CKivErrorStack::kDefaultCap);
    }
    void TearDown() override { CKivErrorStack::Clear(); }
};

void ReadFileY() {
    CKivErrorScope scope(L"while reading file %s", L"Y.xml");
    CKivErrorStack::Report(L"line %d: unexpected end of file", 12);
}

TEST_F(ErrorStack, ShowsTheNestedChainAfterTheScopesHaveClosed) {
    {
        CKivErrorScope job(L"while loading job %s", L"X");
        ReadFileY();
        {
            CKivErrorScope other(L"while reading file Z.xml");
            CKivErrorStack::Report(L"bad checksum");
            CKivErrorStack::Report(L"file left unchanged");
        }
    }
    EXPECT_EQ(CKivErrorStack::GetDepth(), 0);
    EXPECT_TRUE(CKivErrorStack::HasErrors());
    EXPECT_EQ(CKivErrorStack::GetText(),
              L"while loading job X\r\n"
              L"  while reading file Y.xml\r\n"
              L"    line 12: unexpected end of file\r\n"
              L"  while reading file Z.xml\r\n"
              L"    bad checksum\r\n"
              L"    file left unchanged");
    EXPECT_EQ(CKivErrorStack::GetLastError(), L"file left unchanged");

    // Contexts that saw no error leave no trace; an open context is recorded again after Clear.
    CKivErrorStack::Clear();
    CKivErrorScope outer(L"while saving");
    { CKivErrorScope quiet(L"while checking space"); }
    EXPECT_FALSE(CKivErrorStack::HasErrors());
    EXPECT_EQ(CKivErrorStack::GetText(), L"");
    CKivErrorStack::Report(L"disk full");
    EXPECT_EQ(CKivErrorStack::GetText(), L"while saving\r\n  disk full");
}

TEST_F(ErrorStack, CapKeepsTheNewestRecordsAndBoundsRunawayContexts) {
    CKivErrorStack::SetCap(3);
    for (int i = 1; i <= 5; ++i) CKivErrorStack::Report(L"error %d", i);
    EXPECT_EQ(CKivErrorStack::GetCount(), 3);
    EXPECT_EQ(CKivErrorStack::GetText(), L"...\r\nerror 3\r\nerror 4\r\nerror 5");

    CKivErrorStack::Clear();
    for (int i = 0; i < 10; ++i) CKivErrorStack::Push(L"level %d", i);
    EXPECT_EQ(CKivErrorStack::GetDepth(), 10);
    CKivErrorStack::Report(L"deep");
    EXPECT_EQ(CKivErrorStack::GetCount(), 3) << "only the kept contexts and the error, trimmed to the cap";
    EXPECT_EQ(CKivErrorStack::GetLastError(), L"deep");
    for (int i = 0; i < 10; ++i) CKivErrorStack::Pop();
    EXPECT_EQ(CKivErrorStack::GetDepth(), 0);
    CKivErrorStack::Pop();  // one Pop too many does no harm
    EXPECT_EQ(CKivErrorStack::GetDepth(), 0);
}

struct OtherThread {
    CKivStringT textBefore;
    CKivStringT textAfter;
};

DWORD WINAPI ReportOnAnotherThread(LPVOID parameter) {
    auto* other = static_cast<OtherThread*>(parameter);
    other->textBefore = CKivErrorStack::GetText();
    CKivErrorScope scope(L"while sending");
    CKivErrorStack::Report(L"no reply");
    other->textAfter = CKivErrorStack::GetText();
    return 0;
}

TEST_F(ErrorStack, EachThreadHasItsOwnStack) {
    CKivErrorScope mine(L"while drawing");
    CKivErrorStack::Report(L"no image");
    OtherThread other;
    HANDLE thread = CreateThread(nullptr, 0, ReportOnAnotherThread, &other, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_EQ(other.textBefore, L"");
    EXPECT_EQ(other.textAfter, L"while sending\r\n  no reply");
    EXPECT_EQ(CKivErrorStack::GetText(), L"while drawing\r\n  no image");
    EXPECT_EQ(CKivErrorStack::GetDepth(), 1);
}

}  // namespace
