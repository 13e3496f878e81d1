// The account's own resources: the default icons, shipped as TIFF files in
// the project's resources folder and installed under <datadir>/tarn. Read
// once per process and kept; nothing here owns account data.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tarn/platform/value.h"

namespace tarn {

// The bytes of the image resource `name` ("accounticon_default" reads
// "accounticon_default.tiff"), or nullopt when no resource folder has it (the
// first failure for a name is logged). Looked up in the folder set with
// SetResourceDirectory, else in $TARN_RESOURCE_DIR, the source tree's
// resources and the installed ones, in that order.
std::optional<plist::Data> ImageResource(std::string_view name);

// Makes `directory` the only place resources are looked for (nullopt returns
// to the usual places) and forgets what was read.
void SetResourceDirectory(std::optional<std::string> directory);

}  // namespace tarn
