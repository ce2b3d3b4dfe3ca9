// The handheld model tests over the host's model knob.
#include "platform/kivutils/Platform.h"

#include "platform/host/Host.h"

namespace kiv_platform {

using kiv_host::EModel;

bool IsGetac() { return kiv_host::GetModel() == EModel::Getac; }
bool IsPellan() { return kiv_host::GetModel() == EModel::Pellan; }
bool IsMirel() { return kiv_host::GetModel() == EModel::Mirel; }
bool IsDorsk() { return kiv_host::GetModel() == EModel::Dorsk; }
bool IsOstra() { return kiv_host::GetModel() == EModel::Ostra; }
bool IsTarvoOld() { return kiv_host::GetModel() == EModel::TarvoOld; }

}  // namespace kiv_platform
