#include "platform/mfc/Afx.h"

HINSTANCE AfxGetInstanceHandle() { return reinterpret_cast<HINSTANCE>(static_cast<uintptr_t>(0x400000)); }
