#include "host/helper_library.h"

#include "log/diag_log.h"

namespace velk::host {
namespace {

template <class Fn>
Fn Resolve(HMODULE module, const char* name) {
    return reinterpret_cast<Fn>(::GetProcAddress(module, name));
}

}  // namespace

CVelkHlpWrapper::CVelkHlpWrapper(const std::wstring& path, DWORD load_flags) {
    // The altered search path makes the library's own dependencies resolve
    // from its folder, not from the client's.
    module_.reset(::LoadLibraryExW(path.c_str(), nullptr, load_flags));
    if (!module_) {
        VELK_LOG(L"Failed to init HVNWpr");
        return;
    }
    init_ = Resolve<VelkHelperInitFn>(module_.get(), "velkHelperInit");
    exit_ = Resolve<VelkHelperExitFn>(module_.get(), "velkHelperExit");
    protect_ =
        Resolve<VelkHelperRTscanFolderProtectFn>(module_.get(), "velkHelperRTscanFolderProtect");
    get_proxy_ = Resolve<VelkHelperGetProxyFn>(module_.get(), "velkHelperGetProxy");
    if (init_ == nullptr || exit_ == nullptr || protect_ == nullptr || get_proxy_ == nullptr ||
        init_() == 0) {
        VELK_LOG(L"Failed to init HVNWpr");
        module_.reset();
        init_ = nullptr;
        exit_ = nullptr;
        protect_ = nullptr;
        get_proxy_ = nullptr;
    }
}

CVelkHlpWrapper::~CVelkHlpWrapper() {
    if (module_ && exit_ != nullptr)
        exit_();
}

int CVelkHlpWrapper::RTscanFolderProtect(const wchar_t* folder, bool protect) const {
    if (!IsReady() || folder == nullptr)
        return 0;
    return protect_(folder, protect ? 1 : 0);
}

int CVelkHlpWrapper::GetProxy(wchar_t* buffer, unsigned chars) const {
    if (!IsReady() || buffer == nullptr || chars == 0)
        return 0;
    return get_proxy_(buffer, chars);
}

}  // namespace velk::host
