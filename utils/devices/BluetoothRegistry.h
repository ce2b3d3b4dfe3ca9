// BluetoothRegistry: the COM port through which the application reaches a Bluetooth
// device (port 1) and a second one (port 2), found by probing the registry corners of
// the Bluetooth stacks that the supported handhelds carry, and which stacks are there.
// Only reads the registry (and one stack's "BtConfig.ini"); no port is opened.
#pragma once

#include <cstddef>

#include "platform/kivutils/KivArray.h"
#include "utils/units/UnitTypes.h"

kiv_df::ECommPort GetBluetoothComPort();
kiv_df::ECommPort GetBluetoothComPort2();
// The user's stored choice while it is still one of the two ports, else a found port.
kiv_df::ECommPort GetBluetoothComPortSelected();
kiv_df::ECommPort GetBluetoothComPort2Selected();

kiv_df::ECommPort GetBluetoothComPortForSocket();
kiv_df::ECommPort GetBluetoothComPort2ForSocket();
kiv_df::ECommPort GetInternalKivBluetoothComPort();
kiv_df::ECommPort GetInternalKivBluetoothComPort2();
kiv_df::ECommPort GetBluetoothComPortForIpaq();
kiv_df::ECommPort GetBluetoothComPortForOstra();
kiv_df::ECommPort GetBluetoothComPort2ForOstra();
// The Microsoft stack's ports, ascending; false when its key cannot be listed.
bool GetMsBtComPorts(CKivArray<kiv_df::ECommPort>& ports);

bool isMsBtManagerAvailable();
bool IsInternalKivBluetoothInstalled();
bool IsInternalKivBluetoothAvailable();
bool IsNewInternalKivBluetoothAvailable();
bool IsSocketBluetoothAvailable();

// The port that the older handheld's stack names in its "BtConfig.ini" (1 or 2; 0 for
// none): records of a 32-bit little-endian length and that many bytes, and one 32-bit
// number. A record that claims more bytes than the file holds ends the reading with 0.
kiv_df::ECommPort GetBtConfigIniPort(const wchar_t* path);

// The unit's name also qualifies its functions, as the connection screens write both.
namespace BluetoothRegistry {
using ::GetBluetoothComPort;
using ::GetBluetoothComPort2;
using ::GetBluetoothComPort2ForOstra;
using ::GetBluetoothComPort2ForSocket;
using ::GetBluetoothComPort2Selected;
using ::GetBluetoothComPortForIpaq;
using ::GetBluetoothComPortForOstra;
using ::GetBluetoothComPortForSocket;
using ::GetBluetoothComPortSelected;
using ::GetInternalKivBluetoothComPort;
using ::GetInternalKivBluetoothComPort2;
using ::GetMsBtComPorts;
using ::isMsBtManagerAvailable;
using ::IsInternalKivBluetoothAvailable;
using ::IsInternalKivBluetoothInstalled;
using ::IsNewInternalKivBluetoothAvailable;
using ::IsSocketBluetoothAvailable;
}  // namespace BluetoothRegistry
