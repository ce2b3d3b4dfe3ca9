// kivutil bt ports: what each Bluetooth stack's registry corner holds, and the port 1
// and port 2 that the dispatch of this handheld model picks, with the rule that chose.
#include <cstdio>
#include <memory>
#include <string>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivString.h"
#include "platform/kivutils/Platform.h"
#include "platform/win32/Win32.h"
#include "tools/kivutil/Command.h"
#include "utils/devices/BluetoothRegistry.h"
#include "utils/settings/SettingsStore.h"

namespace {

using kiv_df::ECommPort;
using kiv_host::EModel;

struct BtOptions {
    std::string registry, model;
};

const struct {
    const char* name;
    EModel model;
} kModels[] = {{"Unknown", EModel::Unknown}, {"Getac", EModel::Getac}, {"Pellan", EModel::Pellan},
               {"Mirel", EModel::Mirel},     {"Dorsk", EModel::Dorsk}, {"Ostra", EModel::Ostra},
               {"TarvoOld", EModel::TarvoOld}};

std::string Port(ECommPort p) { return p ? "COM" + std::to_string(static_cast<int>(p)) : "none"; }

bool KeyExists(const wchar_t* path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

// What the dispatch reads, gathered before it runs (its Microsoft fallback stores a choice).
struct Findings {
    ECommPort socket[2], internal[2], ostra[2], ipaq, btConfig, stored[2];
    CKivArray<ECommPort> microsoft;
    bool internalPresent, newInternal, useInternal;
};

std::string Why(const Findings& f, int n) {
    const ECommPort socket = f.socket[n], internal = f.internal[n];
    if (f.newInternal) {
        if (socket) return "the internal driver is running, and the Socket stack's port comes first";
        return internal ? "the internal driver is running and the Socket stack has no port: the driver's port"
                        : "the internal driver is running, but neither it nor the Socket stack has this port";
    }
    if (f.useInternal) {
        if (f.internalPresent && internal) return "internal Bluetooth is chosen in the settings: the internal driver's port";
        if (kiv_platform::IsTarvoOld()) return "internal Bluetooth is chosen on the older model: the port BtConfig.ini names";
        return "internal Bluetooth is chosen in the settings, but this model has no internal driver with a port";
    }
    if (socket) return "the Socket stack's port";
    if (kiv_platform::IsMirel())
        return internal ? "no Socket port: the internal driver's port" : "no Socket port nor internal driver: the model's fixed port 6";
    if (f.stored[n]) return "no Socket port: the choice stored in the settings";
    return f.microsoft.IsEmpty() ? "no stack has a port" : "no Socket port: the lowest Microsoft-stack port, now stored as the choice";
}

int RunPorts(const BtOptions& o) {
    if (!o.model.empty()) {
        bool known = false;
        for (const auto& m : kModels)
            if (CKivStringT(m.name).CompareNoCase(CKivStringT(o.model.c_str())) == 0) kiv_host::SetModel(m.model), known = true;
        if (!known)
            return kivutil::BadInput("'" + o.model + "' is not a handheld model; use Unknown, Getac, Pellan, Mirel, Dorsk, Ostra or TarvoOld");
    }
    if (!o.registry.empty()) {
        std::wstring error;
        // The import's own warning would repeat the one line said below.
        kiv_host::SetLogSink([](const kiv_host::LogEntry&) {});
        const bool imported = kiv_host::ImportRegistry(o.registry, &error);
        kiv_host::SetLogSink(nullptr);
        if (!imported) {
            std::fprintf(stderr, "kivutil: cannot import %s: %s\n", o.registry.c_str(),
                         error.empty() ? "the file cannot be read" : kiv_text::ToUtf8(error).c_str());
            return kivutil::kExitFailed;
        }
    }
    Findings f{};
    f.socket[0] = GetBluetoothComPortForSocket();
    f.socket[1] = GetBluetoothComPort2ForSocket();
    f.internal[0] = GetInternalKivBluetoothComPort();
    f.internal[1] = GetInternalKivBluetoothComPort2();
    f.ostra[0] = GetBluetoothComPortForOstra();
    f.ostra[1] = GetBluetoothComPort2ForOstra();
    f.ipaq = GetBluetoothComPortForIpaq();
    f.btConfig = GetBtConfigIniPort(L"BtConfig.ini");
    f.stored[0] = GetSelectedBluetoothPort();
    f.stored[1] = GetSelectedBluetoothPort2();
    GetMsBtComPorts(f.microsoft);
    f.internalPresent = kiv_platform::IsGetac() ? KeyExists(L"Software\\KIV\\Bluetooth\\Driver")
                                                 : kiv_platform::IsPellan() || kiv_platform::IsMirel() ||
                                                       kiv_platform::IsDorsk() || kiv_platform::IsOstra();
    f.newInternal = IsNewInternalKivBluetoothAvailable();
    f.useInternal = GetUseInternalBT();

    const char* modelName = "Unknown";
    for (const auto& m : kModels)
        if (m.model == kiv_host::GetModel()) modelName = m.name;
    std::printf("model                 %s\n", modelName);
    std::printf("Socket stack          %s; port 1 %s, port 2 %s\n",
                IsSocketBluetoothAvailable() ? "installed" : "no port", Port(f.socket[0]).c_str(), Port(f.socket[1]).c_str());
    std::printf("internal driver       %s on this model; port 1 %s, port 2 %s%s\n", f.internalPresent ? "present" : "absent",
                Port(f.internal[0]).c_str(), Port(f.internal[1]).c_str(), IsInternalKivBluetoothInstalled() ? " (installed)" : "");
    std::string ms;
    for (ECommPort p : f.microsoft) ms += (ms.empty() ? "" : " ") + Port(p);
    std::printf("Microsoft stack       %s%s\n", ms.empty() ? "no ports" : ms.c_str(),
                isMsBtManagerAvailable() ? " (its manager is used)" : "");
    std::printf("iPAQ Widcomm stack    %s\n", Port(f.ipaq).c_str());
    std::printf("built-in driver       port 1 %s, port 2 %s\n", Port(f.ostra[0]).c_str(), Port(f.ostra[1]).c_str());
    std::printf("BtConfig.ini          %s\n", Port(f.btConfig).c_str());
    const ECommPort port1 = GetBluetoothComPort();
    const ECommPort port2 = GetBluetoothComPort2();
    std::printf("port 1                %s: %s\n", Port(port1).c_str(), Why(f, 0).c_str());
    std::printf("port 2                %s: %s\n", Port(port2).c_str(), Why(f, 1).c_str());
    return kivutil::kExitOk;
}

kivutil::Registration reg(52, [](CLI::App& app, std::function<int()>& run) {
    auto* bt = app.add_subcommand("bt", "Bluetooth serial ports found in the registry of each stack");
    bt->callback([&run, bt] {
        if (bt->get_subcommands().empty()) run = [] { return kivutil::BadInput("bt needs a subcommand: ports (see kivutil bt --help)"); };
    });
    auto o = std::make_shared<BtOptions>();
    auto* ports = bt->add_subcommand("ports", "Each stack's findings and the port 1 and port 2 the dispatch picks, with why");
    ports->add_option("--registry", o->registry, "a .reg file to load as the device's registry first");
    ports->add_option("--model", o->model, "handheld model: Unknown, Getac, Pellan, Mirel, Dorsk, Ostra, TarvoOld");
    ports->callback([&run, o] { run = [o] { return RunPorts(*o); }; });
});

}  // namespace
