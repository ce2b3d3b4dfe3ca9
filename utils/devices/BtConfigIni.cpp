// The older handheld's Bluetooth stack names its serial port in "BtConfig.ini", which
// despite its name is a file of length-prefixed records: string 1 (the paired device,
// "N/A" when none), string 2, a number, string 3 (the port name, "COM1:" or "COM2:").
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/win32/Win32.h"
#include "utils/devices/BluetoothRegistry.h"

namespace {

class RecordReader {
public:
    explicit RecordReader(std::FILE* file) : file_(file) {
        if (std::fseek(file_, 0, SEEK_END) == 0) {
            const long size = std::ftell(file_);
            remaining_ = size > 0 ? static_cast<uint64_t>(size) : 0;
        }
        std::rewind(file_);
    }

    bool Number(uint32_t& value) {
        unsigned char bytes[4];
        if (remaining_ < 4 || std::fread(bytes, 1, 4, file_) != 4) return false;
        remaining_ -= 4;
        value = bytes[0] | (bytes[1] << 8) | (bytes[2] << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
        return true;
    }

    // Only short texts can be one the stack writes; a longer one is passed over unread,
    // so a hostile length costs no memory. False when the record runs past the file.
    bool Text(std::string& text, bool& tooLong) {
        uint32_t length = 0;
        if (!Number(length) || length > remaining_) return false;
        tooLong = length > kLongestKept;
        text.clear();
        if (tooLong) {
            if (std::fseek(file_, static_cast<long>(length), SEEK_CUR) != 0) return false;
        } else {
            text.resize(length);
            if (length && std::fread(text.data(), 1, length, file_) != length) return false;
        }
        remaining_ -= length;
        return true;
    }

private:
    static constexpr uint32_t kLongestKept = 16;
    std::FILE* file_;
    uint64_t remaining_ = 0;
};

bool EqualsNoCase(const std::string& text, const char* ascii) {
    size_t i = 0;
    for (; ascii[i]; ++i) {
        if (i >= text.size()) return false;
        char c = text[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (c != ascii[i]) return false;
    }
    return i == text.size();
}

}  // namespace

kiv_df::ECommPort GetBtConfigIniPort(const wchar_t* path) {
    std::FILE* file = _wfopen(path, L"rb");
    if (!file) return kiv_df::eCommNone;
    RecordReader reader(file);
    std::string device, ignored, portName;
    bool deviceLong = false, ignoredLong = false, portLong = false;
    uint32_t number = 0;
    const bool complete = reader.Text(device, deviceLong) && reader.Text(ignored, ignoredLong) && reader.Number(number) &&
                          reader.Text(portName, portLong);
    std::fclose(file);
    if (!complete) return kiv_df::eCommNone;
    if (!deviceLong && (device.empty() || EqualsNoCase(device, "N/A"))) return kiv_df::eCommNone;
    if (portLong) return kiv_df::eCommNone;
    if (EqualsNoCase(portName, "COM1:")) return static_cast<kiv_df::ECommPort>(1);
    if (EqualsNoCase(portName, "COM2:")) return static_cast<kiv_df::ECommPort>(2);
    return kiv_df::eCommNone;
}
