// The MFC subset's base: CObject and the few Afx helpers the library calls. The classes
// of each MFC family (CFile, CDC, CWnd, CDialog, CWinThread, ...) have their own headers.
#pragma once

#include "platform/win32/Win32.h"

class CObject {
public:
    virtual ~CObject() = default;
};

// The instance handle of the running program; the host has one module instance.
HINSTANCE AfxGetInstanceHandle();
