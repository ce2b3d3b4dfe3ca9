// The Drawer's passes, its map surface and scrolling.
#include "utils/render/Drawer.h"

#include <cstdint>

#include "platform/kivutils/KivLog.h"

namespace kiv_render {

namespace {

// The trace lines print a surface's address as eight hex digits, as on the device.
unsigned traceAddress(const void* p) { return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(p)); }

constexpr COLORREF kWhite = 0xFFFFFF;

}  // namespace

Drawer::~Drawer() { cleanup(); }

void Drawer::cleanup() {
    if (dc_.GetSafeHdc() != nullptr) dc_.Detach();
    renderLock_ = false;
    hudSurface_.reset();
    mapSurface_.reset();
    if (memoryDc_ != nullptr) DeleteDC(memoryDc_);
    memoryDc_ = nullptr;
}

bool Drawer::Create(HWND window, const RECT* plot) {
    cleanup();
    if (plot == nullptr) return false;
    plot_ = *plot;
    if (window == nullptr) return false;
    HDC windowDc = ::GetDC(window);
    if (windowDc == nullptr) return false;
    mapSurface_ = makeMapSurface(plot_);
    if (mapSurface_) mapSurface_->clear(kWhite);
    KIV_TRACE_DEBUG(L"init: generating new mapSurface %08X\n", traceAddress(mapSurface_.get()));
    memoryDc_ = CreateCompatibleDC(windowDc);
    ReleaseDC(window, windowDc);
    return memoryDc_ != nullptr;
}

bool Drawer::ChangePlotRect(const RECT* plot) {
    if (plot == nullptr) return false;
    plot_ = *plot;
    // The old picture is not carried over: the view redraws after a resize anyway.
    mapSurface_ = makeMapSurface(plot_);
    if (mapSurface_) mapSurface_->clear(kWhite);
    KIV_TRACE_DEBUG(L"generating new mapSurface on resize %08X\n", traceAddress(mapSurface_.get()));
    return true;
}

bool Drawer::StartRendering(HDC hdc) {
    if (renderLock_) {
        LOGMESSAGE(2, L"*** warning at %s, line %d - Tried to use attach to an active HDC", L"Drawer", 150);
        return false;
    }
    renderLock_ = true;
    dc_.Attach(hdc);
    return true;
}

bool Drawer::EndRendering() {
    if (!renderLock_) return false;
    renderLock_ = false;
    // The one lock serves both kinds of pass, so this also ends a heads-up pass: the map
    // is copied and the heads-up surface stays. Deliberate; callers pair their calls.
    if (mapSurface_) {
        BitBlt(dc_.GetSafeHdc(), plot_.left, plot_.top, plot_.right - plot_.left, plot_.bottom - plot_.top,
               mapSurface_->getDC(), 0, 0, SRCCOPY);
    }
    dc_.Detach();
    return true;
}

bool Drawer::StartHudRendering(HDC hdc) {
    if (renderLock_) return false;
    renderLock_ = true;
    dc_.Attach(hdc);
    hudSurface_ = Bitmap::bindToHdc(hdc, mapSurface_ ? mapSurface_->getWidth() : 0,
                                    mapSurface_ ? mapSurface_->getHeight() : 0);
    return true;
}

bool Drawer::EndHudRendering() {
    if (!renderLock_) return false;
    // Also ends a map pass, without its copy to the screen (the shared lock, deliberate).
    renderLock_ = false;
    dc_.Detach();
    hudSurface_.reset();
    return true;
}

void Drawer::ScrollScene(long dx, long dy) {
    if (!mapSurface_) return;
    HDC dc = mapSurface_->getDC();
    const RECT whole{0, 0, mapSurface_->getWidth(), mapSurface_->getHeight()};
    RECT uncovered{0, 0, 0, 0};
    // A diagonal scroll is two: horizontal first, each painting its own strip white.
    if (dx != 0) {
        ScrollDC(dc, static_cast<int>(dx), 0, &whole, &whole, nullptr, &uncovered);
        PatBlt(dc, uncovered.left, uncovered.top, uncovered.right - uncovered.left, uncovered.bottom - uncovered.top,
               WHITENESS);
    }
    if (dy != 0) {
        ScrollDC(dc, 0, static_cast<int>(dy), &whole, &whole, nullptr, &uncovered);
        PatBlt(dc, uncovered.left, uncovered.top, uncovered.right - uncovered.left, uncovered.bottom - uncovered.top,
               WHITENESS);
    }
}

std::shared_ptr<Drawer::Bitmap> Drawer::makeMapSurface(RECT& rect) {
    return Bitmap::create(rect.right - rect.left, rect.bottom - rect.top, 32);
}

std::shared_ptr<Drawer::Bitmap> Drawer::setMapSurface(std::shared_ptr<Bitmap> surface) {
    std::shared_ptr<Bitmap> previous = std::move(mapSurface_);
    mapSurface_ = std::move(surface);
    return previous;
}

std::shared_ptr<Drawer::Bitmap> Drawer::getMapSurfaceDump() {
    std::shared_ptr<Bitmap> picture = std::move(mapSurface_);
    mapSurface_ = makeMapSurface(plot_);
    if (mapSurface_) mapSurface_->clear(kWhite);
    return picture;
}

}  // namespace kiv_render
