// The handheld model tests of the family library. Each answers whether the program runs
// on that model, as the host was told (kiv_host::SetModel, or KIV_MODEL); on a
// development machine, where no model is set, all answer false.
#pragma once

namespace kiv_platform {

bool IsGetac();
bool IsPellan();
bool IsMirel();
bool IsDorsk();
bool IsOstra();
bool IsTarvoOld();

}  // namespace kiv_platform
