// The quick way into a settings file: a strict reader of exactly the shape the storage
// writes, which gives the same tree as the platform's tokenizer does for such a file and
// declines everything else, so that the tokenizer reads what is not ordinary.
#pragma once

#include <string_view>

#include "platform/kivutils/KivString.h"

class CXmlConfigGroup;
class CConfigGroup;
class CXmlParser;

namespace kiv_settings_detail {

// Groups nest at most this deep; deeper groups are skipped by both readers, so that a
// hostile file cannot exhaust the stack.
constexpr int kMaxGroupDepth = 200;

// Creates the file's groups and values under `root` and returns true, or returns false
// having created nothing when the bytes hold anything but an ordinary settings file.
bool ReadOrdinarySettings(std::string_view bytes, CConfigGroup& root);

// The tokenizer's reading: every "kiv_config" element's groups under `root`. Any text
// at all reads, malformed elements are skipped.
void ReadSettingsTokens(CXmlParser& parser, CConfigGroup& root);

// Creates a loaded value from its type word and element content, as the file format
// reads them; an unknown type word creates nothing. Shared by both readers.
void CreateLoadedValue(CXmlConfigGroup& group, const CKivStringT& name, const CKivStringT& type,
                       const CKivStringT& content);

}  // namespace kiv_settings_detail
