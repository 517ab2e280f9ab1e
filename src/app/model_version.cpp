#include "app/model_version.h"

namespace sb {

static const model_version_info kVersions[kVersionCount] = {
    {1, "Tellura 4 Agricultural", "tellura\\tellx.exe", "tellura\\list100.exe"},
    {2, "Tellura 4 Original", "tellura4C\\tellx.exe", "tellura4C\\list100.exe"},
    {3, "Tellura 4.5", "", ""},
    {4, "Diurna 4.5", "", ""},
    {5, "Tellura 4.6", "", ""},
    {6, "Tellura 5", "\\Program Files\\Tellura Model\\version5\\tellura.exe", ""},
};

bool isValidVersion(int code) { return code >= 1 && code <= kVersionCount; }

const model_version_info* findModelVersion(int code) { return isValidVersion(code) ? &kVersions[code - 1] : nullptr; }

const char* versionDisplayName(int code) {
    const model_version_info* info = findModelVersion(code);
    return info ? info->displayName : "";
}

}  // namespace sb
