#include "toolbar/band_resources.h"

#include "host/addin_globals.h"
#include "log/diag_log.h"

namespace velk::toolbar {

const COLORMAP* TransparentKeyMap() noexcept {
    static const COLORMAP map[] = {{RGB(255, 0, 255), RGB(255, 0, 255)}};
    return map;
}

win32::unique_hbitmap LoadBandBitmap(settings::Profile& profile, const std::wstring& module_folder,
                                     settings::Key key, int id) {
    const std::wstring file = settings::ReadText(profile, key);
    if (!file.empty()) {
        const std::wstring path = module_folder + file;
        HANDLE image = ::LoadImageW(nullptr, path.c_str(), IMAGE_BITMAP, 0, 0,
                                    LR_LOADFROMFILE | LR_CREATEDIBSECTION);
        if (image != nullptr)
            return win32::unique_hbitmap(static_cast<HBITMAP>(image));
        // A broken override should not leave the button blank.
        VELK_LOG(L"@@@ Error : can't load the bitmap file %s", path.c_str());
    }
    return win32::unique_hbitmap(::CreateMappedBitmap(
        host::ResourceModule(), id, 0, const_cast<COLORMAP*>(TransparentKeyMap()), 1));
}

std::wstring SubstituteCompany(const std::wstring& text, settings::Profile& profile,
                               QzResourceStringLoader& strings) {
    static const std::wstring marker = L"<$CORP_NAME>";
    const std::size_t at = text.find(marker);
    if (at == std::wstring::npos)
        return text;
    std::wstring corp = settings::ReadText(profile, settings::Key::CorpName);
    if (corp.empty())
        corp = strings.LoadStringW(L"IDS_CORP_NAME");
    std::wstring result = text;
    result.replace(at, marker.size(), corp);
    return result;
}

}  // namespace velk::toolbar
