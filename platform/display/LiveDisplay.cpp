// The live display over SDL2: one desktop window per visible top-level window of the
// GUI thread, placed as the windows lie on the controller's screen.
#include "platform/display/LiveDisplay.h"

#include <SDL.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "platform/display/InputFeed.h"
#include "platform/display/WindowPicture.h"
#include "platform/host/TextCodec.h"
#include "platform/win32/Win32.h"
#include "platform/win32/WindowHooks.h"

namespace kiv_display {

namespace {

// The controller's screen origin on the desktop, clear of a desktop's panels.
constexpr int kScreenOriginX = 48;
constexpr int kScreenOriginY = 48;
// How long the GUI thread waits for messages before the display looks at the desktop
// again: short enough that typing feels immediate.
constexpr DWORD kTurnIntervalMs = 10;

struct Mirror {
    HWND window = nullptr;
    HWND owner = nullptr;
    SDL_Window* desktop = nullptr;
    Uint32 id = 0;
    HWND lastFocus = nullptr;  // given back when the desktop window is activated again
    std::string title;
    POINT place{};  // on the controller's screen
    bool present = true;
    TWindowPicture picture;
};

// What the change hook records, from any thread; the GUI thread takes it each turn.
struct Changes {
    std::mutex lock;
    bool changed = false;
    std::vector<HWND> toPaint;
};

Changes& PendingChanges() {
    static Changes* changes = new Changes;  // the hook may outlive any display
    return *changes;
}

struct State {
    DWORD thread = 0;
    std::vector<Mirror> mirrors;
    CMouseFeed mouse;
    HWND pointerTop = nullptr;
    std::wstring pendingText;  // typed characters not fed yet, one per turn
    bool inTurn = false;
};

State* g_state = nullptr;  // used only on the attached thread
thread_local bool t_composing = false;

bool Within(HWND ancestor, HWND window) { return window && (window == ancestor || IsChild(ancestor, window)); }

HWND TopLevelOf(HWND window) {
    while (window && (GetWindowLongW(window, GWL_STYLE) & WS_CHILD)) window = GetParent(window);
    return window;
}

void OnWindowChange(HWND window, kiv_win32::WindowChange change) {
    if (t_composing) return;  // the display reading the surfaces itself
    HWND paint = nullptr;
    if (change == kiv_win32::WindowChange::Invalidated) paint = window;
    else if (change != kiv_win32::WindowChange::Pixels && (GetWindowLongW(window, GWL_STYLE) & WS_CHILD))
        paint = GetParent(window);  // the parent shows again what the child covered
    Changes& c = PendingChanges();
    std::lock_guard g(c.lock);
    c.changed = true;
    if (paint && std::find(c.toPaint.begin(), c.toPaint.end(), paint) == c.toPaint.end()) c.toPaint.push_back(paint);
}

Mirror* MirrorOf(Uint32 id) {
    for (Mirror& m : g_state->mirrors)
        if (m.id == id) return &m;
    return nullptr;
}

Mirror* MirrorOfWindow(HWND window) {
    for (Mirror& m : g_state->mirrors)
        if (m.window == window) return &m;
    return nullptr;
}

// ---- keys ---------------------------------------------------------------------------------------

struct KeyPair {
    SDL_Keycode desktop;
    BYTE controller;
};
constexpr KeyPair kKeys[] = {
    {SDLK_F1, VK_F1},         {SDLK_F2, VK_F2},         {SDLK_F3, VK_F3},          {SDLK_F4, VK_F4},
    {SDLK_F5, VK_F5},         {SDLK_F6, VK_F6},         {SDLK_F7, VK_F7},          {SDLK_F8, VK_F8},
    {SDLK_F9, VK_F9},         {SDLK_UP, VK_UP},         {SDLK_DOWN, VK_DOWN},      {SDLK_LEFT, VK_LEFT},
    {SDLK_RIGHT, VK_RIGHT},   {SDLK_RETURN, VK_RETURN}, {SDLK_KP_ENTER, VK_RETURN}, {SDLK_ESCAPE, VK_ESCAPE},
    {SDLK_TAB, VK_TAB},       {SDLK_BACKSPACE, VK_BACK}, {SDLK_DELETE, VK_DELETE}, {SDLK_HOME, VK_HOME},
    {SDLK_END, VK_END},       {SDLK_INSERT, VK_F24},    {SDLK_LSHIFT, VK_SHIFT},   {SDLK_RSHIFT, VK_SHIFT},
    {SDLK_LCTRL, VK_CONTROL}, {SDLK_RCTRL, VK_CONTROL}, {SDLK_LALT, VK_MENU},      {SDLK_RALT, VK_MENU},
};

// A desktop key's controller key, or 0. Printable keys come as text instead (see
// OnText), except with Ctrl or Alt held, when no text comes: a letter or digit then goes
// as its key.
BYTE ControllerKeyOf(const SDL_Keysym& key) {
    for (const KeyPair& k : kKeys)
        if (k.desktop == key.sym) return k.controller;
    const bool chord = (key.mod & (KMOD_CTRL | KMOD_ALT)) != 0;
    if (chord && key.sym >= SDLK_a && key.sym <= SDLK_z) return static_cast<BYTE>('A' + (key.sym - SDLK_a));
    if (chord && key.sym >= SDLK_0 && key.sym <= SDLK_9) return static_cast<BYTE>(key.sym);
    return 0;
}

// Keys need a window with the focus to go to; a desktop window that holds the keyboard
// gives its window the focus when none has it.
void EnsureFocus(Uint32 id) {
    HWND focus = GetFocus();
    if (focus && IsWindow(focus)) return;
    if (Mirror* m = MirrorOf(id)) SetFocus(m->lastFocus && IsWindow(m->lastFocus) ? m->lastFocus : m->window);
}

// ---- events -------------------------------------------------------------------------------------

void OnWindowEvent(const SDL_WindowEvent& e) {
    Mirror* m = MirrorOf(e.windowID);
    if (!m) return;
    switch (e.event) {
        case SDL_WINDOWEVENT_CLOSE: PostMessageW(m->window, WM_CLOSE, 0, 0); break;
        case SDL_WINDOWEVENT_EXPOSED: m->present = true; break;
        case SDL_WINDOWEVENT_FOCUS_GAINED:
            // Activating a desktop window gives its window the keys, at the control that
            // had them when it was left.
            if (!Within(m->window, GetFocus()))
                SetFocus(m->lastFocus && IsWindow(m->lastFocus) && Within(m->window, m->lastFocus) ? m->lastFocus
                                                                                                 : m->window);
            break;
        default: break;
    }
}

// Feeds the next typed character still waiting; true when there was one.
bool FeedPendingText() {
    std::wstring& text = g_state->pendingText;
    if (text.empty()) return false;
    FeedCharacter(static_cast<char32_t>(text.front()));
    text.erase(0, 1);
    return true;
}

// True when the event went into the queues as input.
bool OnEvent(const SDL_Event& e) {
    switch (e.type) {
        case SDL_WINDOWEVENT: OnWindowEvent(e.window); return false;
        case SDL_KEYDOWN:
        case SDL_KEYUP: {
            const BYTE key = ControllerKeyOf(e.key.keysym);
            if (!key) return false;
            EnsureFocus(e.key.windowID);
            FeedKey(key, e.type == SDL_KEYDOWN);
            return true;
        }
        case SDL_TEXTINPUT:
            EnsureFocus(e.text.windowID);
            g_state->pendingText += kiv_text::FromUtf8(e.text.text);
            return FeedPendingText();
        case SDL_MOUSEBUTTONDOWN: {
            Mirror* m = MirrorOf(e.button.windowID);
            if (!m || e.button.button != SDL_BUTTON_LEFT) return false;
            g_state->pointerTop = m->window;
            g_state->mouse.Press(m->window, POINT{e.button.x, e.button.y});
            return true;
        }
        case SDL_MOUSEMOTION:
            if (!(e.motion.state & SDL_BUTTON_LMASK) || !g_state->mouse.Captured() || !IsWindow(g_state->pointerTop))
                return false;
            g_state->mouse.Move(g_state->pointerTop, POINT{e.motion.x, e.motion.y});
            return true;
        case SDL_MOUSEBUTTONUP:
            if (e.button.button != SDL_BUTTON_LEFT || !IsWindow(g_state->pointerTop)) return false;
            g_state->mouse.Release(g_state->pointerTop, POINT{e.button.x, e.button.y});
            return true;
        default: return false;
    }
}

// ---- desktop windows ----------------------------------------------------------------------------

std::string TitleOf(HWND window) {
    wchar_t text[256] = {};
    GetWindowTextW(window, text, 256);
    return *text ? kiv_text::ToUtf8(text) : std::string("kiv");
}

BOOL CALLBACK CollectShown(HWND window, LPARAM list) {
    if (IsWindowVisible(window) && GetWindowThreadProcessId(window, nullptr) == g_state->thread)
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

void Present(Mirror& m) {
    t_composing = true;
    const bool composed = ComposeWindowPicture(m.window, m.picture);
    t_composing = false;
    if (!composed) return;
    // A window retitled or moved is retitled or moved on the desktop too.
    if (std::string title = TitleOf(m.window); title != m.title) {
        SDL_SetWindowTitle(m.desktop, title.c_str());
        m.title = std::move(title);
    }
    RECT r{};
    GetWindowRect(m.window, &r);
    if (r.left != m.place.x || r.top != m.place.y) {
        m.place = POINT{r.left, r.top};
        SDL_SetWindowPosition(m.desktop, kScreenOriginX + r.left, kScreenOriginY + r.top);
    }
    int w = 0, h = 0;
    SDL_GetWindowSize(m.desktop, &w, &h);
    if (w != m.picture.width || h != m.picture.height) SDL_SetWindowSize(m.desktop, m.picture.width, m.picture.height);
    SDL_Surface* surface = SDL_GetWindowSurface(m.desktop);
    if (!surface) return;
    const int width = std::min(surface->w, m.picture.width), height = std::min(surface->h, m.picture.height);
    if (SDL_MUSTLOCK(surface)) SDL_LockSurface(surface);
    SDL_ConvertPixels(width, height, SDL_PIXELFORMAT_RGB888, m.picture.pixels.data(), m.picture.width * 4,
                      surface->format->format, surface->pixels, surface->pitch);
    if (SDL_MUSTLOCK(surface)) SDL_UnlockSurface(surface);
    SDL_UpdateWindowSurface(m.desktop);
    m.present = false;
}

// Desktop windows for the windows shown since the last turn, none for those gone.
void SyncMirrors() {
    std::vector<HWND> shown;
    EnumWindows(&CollectShown, reinterpret_cast<LPARAM>(&shown));
    auto& mirrors = g_state->mirrors;
    for (auto it = mirrors.begin(); it != mirrors.end();) {
        if (std::find(shown.begin(), shown.end(), it->window) != shown.end()) {
            ++it;
            continue;
        }
        const bool hadKeyboard = SDL_GetKeyboardFocus() == it->desktop;
        const HWND owner = it->owner;
        SDL_DestroyWindow(it->desktop);
        it = mirrors.erase(it);
        // As a desktop gives the keys back when a popup goes: to the owner, at the
        // control that last had them, even without a window manager to do it.
        Mirror* next = MirrorOfWindow(owner);
        if (!next && !mirrors.empty()) next = &mirrors.back();
        if (!next) continue;
        if (hadKeyboard) {
            SDL_RaiseWindow(next->desktop);
            SDL_SetWindowInputFocus(next->desktop);
        }
        if (!GetFocus() || !IsWindow(GetFocus()))
            SetFocus(next->lastFocus && IsWindow(next->lastFocus) ? next->lastFocus : next->window);
        it = mirrors.begin();  // SetFocus may have shown or hidden windows
    }
    for (HWND window : shown) {
        if (MirrorOfWindow(window)) continue;
        RECT r{};
        GetWindowRect(window, &r);
        Mirror m;
        m.window = window;
        m.owner = GetWindow(window, GW_OWNER);
        m.title = TitleOf(window);
        m.place = POINT{r.left, r.top};
        m.desktop = SDL_CreateWindow(m.title.c_str(), kScreenOriginX + r.left, kScreenOriginY + r.top,
                                     std::max<LONG>(1, r.right - r.left), std::max<LONG>(1, r.bottom - r.top),
                                     SDL_WINDOW_SHOWN);
        if (!m.desktop) continue;
        m.id = SDL_GetWindowID(m.desktop);
        // An owned window (a popup over its dialog) stays above its owner on the desktop.
        if (Mirror* owner = MirrorOfWindow(m.owner)) SDL_SetWindowModalFor(m.desktop, owner->desktop);
        // The first paint a screen asks of a window it shows.
        PaintWindowTree(window);
        if (Within(window, GetFocus())) SDL_RaiseWindow(m.desktop);
        mirrors.push_back(std::move(m));
    }
}

}  // namespace

bool Attach(std::string& reason) {
    if (g_state) return true;
    const char* chosen = std::getenv("SDL_VIDEODRIVER");
    const char* x11 = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    std::string driver = chosen && *chosen ? chosen : x11 && *x11 ? "x11" : wayland && *wayland ? "wayland" : "";
    if (driver.empty()) {
        reason = "no desktop to show windows on: neither DISPLAY nor WAYLAND_DISPLAY is set";
        return false;
    }
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_VIDEODRIVER, driver.c_str());
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        reason = std::string("the desktop cannot be reached (") + SDL_GetError() + ")";
        SDL_Quit();
        return false;
    }
    SDL_StartTextInput();
    g_state = new State;
    g_state->thread = GetCurrentThreadId();
    {
        Changes& c = PendingChanges();
        std::lock_guard g(c.lock);
        c.changed = true;
        c.toPaint.clear();
    }
    kiv_win32::SetWindowChangeHook(&OnWindowChange);
    kiv_win32::SetMessageWaitHook(&Pump, kTurnIntervalMs);
    return true;
}

void Detach() {
    if (!g_state || GetCurrentThreadId() != g_state->thread) return;
    kiv_win32::SetMessageWaitHook(nullptr, 0);
    kiv_win32::SetWindowChangeHook(nullptr);
    for (Mirror& m : g_state->mirrors) SDL_DestroyWindow(m.desktop);
    delete g_state;
    g_state = nullptr;
    SDL_StopTextInput();
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    SDL_Quit();
}

bool IsAttached() { return g_state != nullptr; }

void Pump() {
    if (!g_state || g_state->inTurn || GetCurrentThreadId() != g_state->thread) return;
    g_state->inTurn = true;
    // One piece of input per turn: the key state a key message is translated with is the
    // state when it is read, so the queue is read before the next key changes it.
    SDL_Event e;
    if (!FeedPendingText())
        while (SDL_PollEvent(&e))
            if (OnEvent(e)) break;
    std::vector<HWND> toPaint;
    {
        Changes& c = PendingChanges();
        std::lock_guard g(c.lock);
        toPaint.swap(c.toPaint);
    }
    // Windows that asked to be painted again, as a desktop asks once its queue is empty.
    for (HWND w : toPaint)
        if (IsWindowVisible(w) && GetWindowThreadProcessId(w, nullptr) == g_state->thread && MirrorOfWindow(TopLevelOf(w)))
            SendMessageW(w, WM_PAINT, 0, 0);
    SyncMirrors();
    bool changed = false;
    {
        Changes& c = PendingChanges();
        std::lock_guard g(c.lock);
        std::swap(changed, c.changed);
    }
    const HWND focus = GetFocus();
    for (Mirror& m : g_state->mirrors) {
        if (changed || m.present) Present(m);
        if (Within(m.window, focus)) m.lastFocus = focus;
    }
    g_state->inTurn = false;
}

}  // namespace kiv_display
