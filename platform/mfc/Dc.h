// CDC, the MFC device context: a thin owner of an HDC. The drawer attaches a caller's
// HDC for the length of a pass and detaches it again, so a CDC never deletes an HDC it
// was only lent.
#pragma once

#include "platform/mfc/Afx.h"

class CDC : public CObject {
public:
    CDC() = default;
    ~CDC() override;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    BOOL Attach(HDC dc);  // FALSE when one is already attached or `dc` is null
    HDC Detach();
    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }

    // Makes and owns a memory device context; DeleteDC gives back the one it made.
    BOOL CreateCompatibleDC(CDC* dc);
    BOOL DeleteDC();

    HGDIOBJ SelectObject(HGDIOBJ object) { return ::SelectObject(m_hDC, object); }
    HGDIOBJ SelectStockObject(int index) { return ::SelectObject(m_hDC, ::GetStockObject(index)); }

    POINT MoveTo(int x, int y);
    POINT MoveTo(POINT p) { return MoveTo(p.x, p.y); }
    BOOL LineTo(int x, int y) { return ::LineTo(m_hDC, x, y); }
    BOOL LineTo(POINT p) { return LineTo(p.x, p.y); }
    BOOL Polyline(const POINT* points, int count) { return ::Polyline(m_hDC, points, count); }
    BOOL Polygon(const POINT* points, int count) { return ::Polygon(m_hDC, points, count); }
    BOOL Rectangle(int l, int t, int r, int b) { return ::Rectangle(m_hDC, l, t, r, b); }
    BOOL Rectangle(const RECT* r) { return Rectangle(r->left, r->top, r->right, r->bottom); }
    BOOL Ellipse(int l, int t, int r, int b) { return ::Ellipse(m_hDC, l, t, r, b); }
    BOOL Ellipse(const RECT* r) { return Ellipse(r->left, r->top, r->right, r->bottom); }
    void FillRect(const RECT* rect, HBRUSH brush) { ::FillRect(m_hDC, rect, brush); }
    // Fills with a colour without disturbing the selected brush; leaves the background
    // colour set to it, as MFC does.
    void FillSolidRect(const RECT* rect, COLORREF colour);
    void FillSolidRect(int x, int y, int width, int height, COLORREF colour);
    COLORREF SetPixel(int x, int y, COLORREF c) { return ::SetPixel(m_hDC, x, y, c); }
    COLORREF GetPixel(int x, int y) const { return ::GetPixel(m_hDC, x, y); }

    BOOL BitBlt(int x, int y, int w, int h, CDC* source, int xs, int ys, DWORD rop) {
        return ::BitBlt(m_hDC, x, y, w, h, source ? source->m_hDC : nullptr, xs, ys, rop);
    }
    BOOL PatBlt(int x, int y, int w, int h, DWORD rop) { return ::PatBlt(m_hDC, x, y, w, h, rop); }
    BOOL ScrollDC(int dx, int dy, const RECT* scroll, const RECT* clip, HRGN region, LPRECT update) {
        return ::ScrollDC(m_hDC, dx, dy, scroll, clip, region, update);
    }

    COLORREF SetTextColor(COLORREF c) { return ::SetTextColor(m_hDC, c); }
    COLORREF SetBkColor(COLORREF c) { return ::SetBkColor(m_hDC, c); }
    int SetBkMode(int mode) { return ::SetBkMode(m_hDC, mode); }
    UINT SetTextAlign(UINT align) { return ::SetTextAlign(m_hDC, align); }
    BOOL TextOut(int x, int y, LPCWSTR text, int count) { return ::TextOutW(m_hDC, x, y, text, count); }
    BOOL ExtTextOut(int x, int y, UINT options, const RECT* rect, LPCWSTR text, UINT count, const INT* dx) {
        return ::ExtTextOutW(m_hDC, x, y, options, rect, text, count, dx);
    }
    int DrawText(LPCWSTR text, int count, LPRECT rect, UINT format) {
        return ::DrawTextW(m_hDC, text, count, rect, format);
    }
    SIZE GetTextExtent(LPCWSTR text, int count) const;

    HDC m_hDC = nullptr;

private:
    bool owned_ = false;  // made by CreateCompatibleDC, so ours to delete
};
