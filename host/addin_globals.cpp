#include "host/addin_globals.h"

namespace velk::host {

AddinGlobals& Globals() noexcept {
    static AddinGlobals globals;
    return globals;
}

}  // namespace velk::host
