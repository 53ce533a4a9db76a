#include "host/os_version.h"

namespace velk::host {

int ClassifyOs(const OsFacts& f) noexcept {
    const bool amd64 = f.have_architecture && f.architecture == kArchitectureAmd64;
    if (f.platform_id == kPlatformWin9x) {
        if (f.major != 4)
            return kOsUnknown;
        switch (f.minor) {
            case 0:
                return kOsWin95;
            case 10:
                return kOsWin98;
            case 90:
                return kOsWinMe;
            default:
                return kOsUnknown;
        }
    }
    if (f.platform_id != kPlatformNt)
        return kOsUnknown;
    if (f.major < 5)
        return kOsNtBefore5;
    if (f.major == 5) {
        switch (f.minor) {
            case 0:
                return kOsWin2000;
            case 1:
                return kOsWinXp;
            case 2:
                if (f.server_r2 != 0)
                    return kOsServer2003R2;
                if (f.product_type == kProductWorkstation && amd64)
                    return kOsWinXpX64;
                return kOsServer2003;
            default:
                return kOsUnknown;
        }
    }
    if (f.major == 6) {
        if (f.product_type == kProductWorkstation) {
            return amd64 ? kOsVistaWorkstation64 : kOsVistaWorkstation32;
        }
        return amd64 ? kOsVistaServer64 : kOsVistaServer32;
    }
    return kOsUnknown;
}

bool IsX64OsCode(int code) noexcept {
    return code == kOsWinXpX64 || code == kOsVistaWorkstation64 || code == kOsVistaServer64;
}

}  // namespace velk::host
