// Xlate: the translation of user-interface texts through a language file. Until a file
// is loaded every text translates to itself.
//
// A language file is UTF-8 (with or without BOM) or UTF-16LE with BOM. Each line holds
// one pair, the original and its translation separated by a tab; "\t", "\n" and "\\"
// stand for a tab, a line break and a backslash inside either text. Blank lines and
// lines whose first character is '#' are skipped.
#pragma once

#include "platform/kivutils/KivString.h"

// The translation of `text`, or `text` itself. The pointer stays valid for the life of
// the process, across later loads.
const wchar_t* Xlate(const wchar_t* text);

// Loads a language file (a device or host path), replacing the loaded one. All or
// nothing: on a malformed line (no tab) or an unreadable file nothing changes, the
// line number is logged and the result is false.
bool LoadLanguageFile(const wchar_t* path);
void UnloadLanguage();
