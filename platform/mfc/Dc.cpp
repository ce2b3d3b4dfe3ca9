// CDC over the GDI of the Win32 subset.
#include "platform/mfc/Dc.h"

CDC::~CDC() { DeleteDC(); }

BOOL CDC::Attach(HDC dc) {
    if (m_hDC || !dc) return FALSE;
    m_hDC = dc;
    owned_ = false;
    return TRUE;
}

HDC CDC::Detach() {
    HDC dc = m_hDC;
    m_hDC = nullptr;
    owned_ = false;
    return dc;
}

BOOL CDC::CreateCompatibleDC(CDC* dc) {
    if (m_hDC) return FALSE;
    m_hDC = ::CreateCompatibleDC(dc ? dc->m_hDC : nullptr);
    owned_ = m_hDC != nullptr;
    return owned_ ? TRUE : FALSE;
}

BOOL CDC::DeleteDC() {
    if (!m_hDC || !owned_) return FALSE;
    const BOOL done = ::DeleteDC(m_hDC);
    m_hDC = nullptr;
    owned_ = false;
    return done;
}

POINT CDC::MoveTo(int x, int y) {
    POINT previous{0, 0};
    ::MoveToEx(m_hDC, x, y, &previous);
    return previous;
}

void CDC::FillSolidRect(const RECT* rect, COLORREF colour) {
    ::SetBkColor(m_hDC, colour);
    HBRUSH brush = ::CreateSolidBrush(colour);
    ::FillRect(m_hDC, rect, brush);
    ::DeleteObject(brush);
}

void CDC::FillSolidRect(int x, int y, int width, int height, COLORREF colour) {
    const RECT r{x, y, x + width, y + height};
    FillSolidRect(&r, colour);
}

SIZE CDC::GetTextExtent(LPCWSTR text, int count) const {
    SIZE size{0, 0};
    ::GetTextExtentPoint32W(m_hDC, text, count, &size);
    return size;
}
