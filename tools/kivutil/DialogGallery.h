// kivutil dialog gallery: one picture of each class of the dialog framework, made
// headless from sample contents, for the documentation and for a quick look.
#pragma once

#include <string>

namespace kivutil {

// Saves the pictures into `folder` (made when missing); prints each file, or one line on
// stderr. Exit status as the commands return it.
int SaveDialogGallery(const std::string& folder);

}  // namespace kivutil
