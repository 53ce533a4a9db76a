#include "actions/folder_msg_ops.h"

#include <cstdio>
#include <cwchar>
#include <ctime>
#include <stdexcept>
#include <string>

#include "actions/header_lines.h"
#include "actions/store_errors.h"
#include "log/diag_log.h"

namespace velk::actions {

using win32::com_ptr;
using win32::unique_bstr;

namespace {

// Exact texts: support staff and their tools search the logs for them.
constexpr wchar_t kCloneName[] = L"CToolBarWnd::ProcCloneMsg";
constexpr wchar_t kMoveName[] = L"CToolBarWnd::ProcMoveMsg";
constexpr wchar_t kDeleteName[] = L"CToolBarWnd::ProcDeleteMsg";
constexpr wchar_t kPurgeName[] = L"CToolBarWnd::ProcDeleteAllSpamMsg";
constexpr wchar_t kCloneIncomplete[] = L"!!! the action of clone item is not complete";
constexpr wchar_t kMoveIncomplete[] = L"!!! the action of move item is not complete";
constexpr wchar_t kDeleteIncomplete[] = L"!!! the action of delete item is not complete";
constexpr wchar_t kNoStore[] = L"@@@ Error: in oea spFolderMsg is NULL.";
constexpr wchar_t kNoFolder[] = L"@@@ Error: spFolder is NULL.";

// Header names the scanning process and the client's rules look for; the
// lower-case ones are lower case on purpose.
constexpr wchar_t kDetectedSpam[] = L"x-has-been-detected_spam";
constexpr wchar_t kDetectedNormal[] = L"x-has-been-detected_normal";
constexpr wchar_t kChecked[] = L"x-has-been-checked";
constexpr wchar_t kAddinChecked[] = L"X-Nuvexa-AntispamAddin-Checked";
constexpr wchar_t kQuarantineTime[] = L"X-Nuvexa-AntispamAddin-QuarantineTime";
constexpr ULONG kSubjectPropId = 5;
constexpr ULONG kDeleteMode = 1;

void LogIn(const wchar_t* function) {
    VELK_LOG(L"@@@ %s  IN", function);
}
void LogOut(const wchar_t* function) {
    VELK_LOG(L"@@@ %s  OUT", function);
}
void LogIncomplete(const wchar_t* function, const wchar_t* incomplete) {
    VELK_LOG(L"@@@ Exception Catched in Function: %s", function);
    VELK_LOG(L"%s", incomplete);
}

unique_bstr MakeBstr(const wchar_t* text) {
    unique_bstr b(::SysAllocString(text));
    if (!b)
        throw ComError{E_OUTOFMEMORY};
    return b;
}

unique_bstr AnsiToBstr(const std::string& text) {
    const int units = ::MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
    if (units == 0)
        throw std::runtime_error("MultiByteToWideChar has failed");
    unique_bstr b(::SysAllocStringLen(nullptr, static_cast<UINT>(units - 1)));
    if (!b)
        throw ComError{E_OUTOFMEMORY};
    if (::MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, b.get(), units) == 0)
        throw std::runtime_error("MultiByteToWideChar has failed");
    return b;
}

std::string WideToAnsi(const wchar_t* text, std::size_t units) {
    if (units == 0)
        return std::string();
    const int n = static_cast<int>(units);
    const int bytes = ::WideCharToMultiByte(CP_ACP, 0, text, n, nullptr, 0, nullptr, nullptr);
    if (bytes == 0)
        throw std::runtime_error("WideCharToMultiByte has failed");
    std::string out(static_cast<std::size_t>(bytes), '\0');
    if (::WideCharToMultiByte(CP_ACP, 0, text, n, &out[0], bytes, nullptr, nullptr) == 0)
        throw std::runtime_error("WideCharToMultiByte has failed");
    return out;
}

void SetHeader(IQzMessage* spMessage, ULONG handle, const wchar_t* name, const wchar_t* value) {
    unique_bstr bname = MakeBstr(name);
    unique_bstr bvalue = MakeBstr(value);
    ULONG ignored = 0;
    ThrowIfFailed(spMessage->SetHeader(handle, bname.get(), bvalue.get(), &ignored));
}

// The scanning process's header lines, in its order, as headers of the
// message; its tagged subject becomes the Subject instead of a header.
void ApplyHeaderText(IQzMessage* spMessage, ULONG handle, const char16_t* headers) {
    // A queued text is always terminated within its field.
    const auto* text = reinterpret_cast<const wchar_t*>(headers);
    const std::size_t units = ::wcsnlen(text, kHeaderUnits);
    if (units == 0)
        return;
    for (const HeaderLine& line : CutHeaderLines(WideToAnsi(text, units))) {
        ULONG ignored = 0;
        if (line.name == kTaggedSubjectHeader) {
            unique_bstr value = AnsiToBstr(line.value);
            ThrowIfFailed(spMessage->SetPropById(handle, kSubjectPropId, value.get(), &ignored));
        } else {
            unique_bstr name = AnsiToBstr(line.name);
            unique_bstr value = AnsiToBstr(line.value);
            ThrowIfFailed(spMessage->SetHeader(handle, name.get(), value.get(), &ignored));
        }
    }
}

void SetDetectedNormalOnce(IQzMessage* spMessage, ULONG handle) {
    if (!CFolderMsgOps::CheckPropertyExist(spMessage, kDetectedNormal))
        SetHeader(spMessage, handle, kDetectedNormal, L"1");
}

void PostProcessAndCommit(IQzMessage* spMessage, std::uint32_t option) {
    ULONG ignored = 0;
    if (option != 0)
        ThrowIfFailed(spMessage->PostProcess(&ignored));
    ThrowIfFailed(spMessage->Commit(&ignored));
}

}  // namespace

HRESULT CreateStoreFolderMgr(IQzFolderMgr** folderMgr) {
    return ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL, IID_IQzFolderMgr,
                              reinterpret_cast<void**>(folderMgr));
}

struct CFolderMsgOps::OpenedMessage {
    com_ptr<IQzFolderMgr> spFolderMgr;
    com_ptr<IQzFolder> spFolder;
    com_ptr<IQzMessage> spMessage;
    ULONG handle = 0;
};

CFolderMsgOps::CFolderMsgOps(CMsgRequestQueues& queues, StoreFactory factory)
    : m_queues(queues), m_factory(std::move(factory)) {}

com_ptr<IQzFolderMgr> CFolderMsgOps::OpenStore() const {
    com_ptr<IQzFolderMgr> spFolderMgr;
    if (m_factory && FAILED(m_factory(spFolderMgr.put())))
        spFolderMgr.reset();
    if (!spFolderMgr)
        VELK_LOG(L"%s", kNoStore);
    return spFolderMgr;
}

bool CFolderMsgOps::OpenMessage(ULONG folderId, ULONG msgId, OpenedMessage& opened) const {
    opened.spFolderMgr = OpenStore();
    if (!opened.spFolderMgr)
        return false;
    ThrowIfFailed(opened.spFolderMgr->GetFolder(folderId, opened.spFolder.put()));
    ThrowIfNull(opened.spFolder);
    ThrowIfFailed(opened.spFolder->GetMessage(msgId, opened.spMessage.put()));
    if (!opened.spMessage) {
        VELK_LOG(L"@@@ Error: Using spFolderMgr get message fail, spMessage is NULL.");
        return false;
    }
    ThrowIfFailed(opened.spMessage->GetBodyHandle(0, 0, &opened.handle));
    if (opened.handle == 0) {
        VELK_LOG(L"@@@ Error: spMessage->GetBodyHandle return lHandle is 0.");
        return false;
    }
    return true;
}

bool CFolderMsgOps::CheckPropertyExist(IQzMessage* spMessage, const wchar_t* name) {
    LogIn(L"CheckPropertyExist");
    ULONG handle = 0;
    ThrowIfFailed(spMessage->GetBodyHandle(0, 0, &handle));
    unique_bstr bname = MakeBstr(name);
    BYTE found = 0;
    unique_bstr value;
    ThrowIfFailed(spMessage->QueryHeader(handle, bname.get(), &found, value.put()));
    bool exists = false;
    if (found != 0) {
        // "0" is how the scanning process clears a marker: it counts as unset.
        unique_bstr zero = MakeBstr(L"0");
        exists = ::VarBstrCmp(value.get(), zero.get(), ::GetThreadLocale(), 0) != VARCMP_EQ;
    }
    LogOut(L"CheckPropertyExist");
    return exists;
}

int CFolderMsgOps::ProcCloneMsg() {
    try {
        LogIn(kCloneName);
        CloneMsgRequest request;
        if (!m_queues.m_ovMsgCopyDataForClone.PopFront(request))
            return 1;

        OpenedMessage opened;
        if (!OpenMessage(request.nFolderID, request.nMsgID, opened))
            return 0;
        IQzMessage* spMessage = opened.spMessage.get();
        ApplyHeaderText(spMessage, opened.handle, request.szHeaders);
        SetDetectedNormalOnce(spMessage, opened.handle);
        SetHeader(spMessage, opened.handle, kChecked, L"1");
        SetHeader(spMessage, opened.handle, kAddinChecked, L"1");
        PostProcessAndCommit(spMessage, request.nOption);
        LogOut(kCloneName);
        return 0;
    } catch (...) {
        LogIncomplete(kCloneName, kCloneIncomplete);
        return 0;
    }
}

int CFolderMsgOps::ProcMoveMsg() {
    try {
        LogIn(kMoveName);
        MoveMsgRequest request;
        if (!m_queues.m_ovMsgCopyDataForMove.PopFront(request))
            return 1;

        OpenedMessage opened;
        if (!OpenMessage(request.nSrcFolderID, request.nMsgID, opened))
            return 0;
        IQzMessage* spMessage = opened.spMessage.get();
        ApplyHeaderText(spMessage, opened.handle, request.szHeaders);
        if (request.nVerdict == 1) {
            SetHeader(spMessage, opened.handle, kDetectedSpam, L"1");
        } else if (request.nVerdict == 2) {
            SetDetectedNormalOnce(spMessage, opened.handle);
        }
        // The reverse of the clone's order, kept as the add-in has always
        // written them.
        SetHeader(spMessage, opened.handle, kAddinChecked, L"1");
        SetHeader(spMessage, opened.handle, kChecked, L"1");
        if (request.nFlagQuarantineTime != 0) {
            // The low 32 bits of the seconds since 1970 (UTC), in decimal.
            wchar_t now[16];
            std::swprintf(now, 16, L"%u", static_cast<unsigned>(std::time(nullptr)));
            SetHeader(spMessage, opened.handle, kQuarantineTime, now);
        }
        PostProcessAndCommit(spMessage, request.nOption);

        if (request.nSrcFolderID != request.nDstFolderID) {
            ULONG newMsgId = 0;
            ThrowIfFailed(opened.spFolderMgr->MoveMessage(
                request.nSrcFolderID, request.nDstFolderID, request.nMsgID, &newMsgId));
            if (newMsgId == 0)
                throw false;
        }
        LogOut(kMoveName);
        return 0;
    } catch (...) {
        LogIncomplete(kMoveName, kMoveIncomplete);
        return 0;
    }
}

int CFolderMsgOps::ProcDeleteMsg() {
    try {
        LogIn(kDeleteName);
        DeleteMsgRequest request;
        if (!m_queues.m_ovMsgCopyDataForDelete.PopFront(request))
            return 1;
        if (request.bDeleteAllSpam != 0) {
            // The receiver purges synchronously and never queues these.
            VELK_LOG(
                L"@@@ [CToolBarWnd::ProcDeleteMsg] Error: This function cannot process "
                L"deleting all mails!!");
            return 0;
        }
        com_ptr<IQzFolderMgr> spFolderMgr = OpenStore();
        if (!spFolderMgr)
            return 0;
        com_ptr<IQzFolder> spFolder;
        ThrowIfFailed(spFolderMgr->GetFolder(request.nFolderID, spFolder.put()));
        if (!spFolder) {
            VELK_LOG(L"%s", kNoFolder);
            return 0;
        }
        ULONG result = 0;
        ThrowIfFailed(spFolder->DeleteMessage(request.nMsgID, kDeleteMode, &result));
        LogOut(kDeleteName);
        return 0;
    } catch (...) {
        LogIncomplete(kDeleteName, kDeleteIncomplete);
        return 0;
    }
}

int CFolderMsgOps::ProcDeleteAllSpamMsg(const DeleteMsgRequest& request) {
    try {
        LogIn(kPurgeName);
        if (request.bDeleteAllSpam == 0) {
            VELK_LOG(
                L"@@@ [CToolBarWnd::ProcDeleteAllMsg] Error: This function cannot process "
                L"deleting only one mail!!");
            return 0;
        }
        com_ptr<IQzFolderMgr> spFolderMgr = OpenStore();
        if (!spFolderMgr)
            return 0;
        com_ptr<IQzFolder> spFolder;
        ThrowIfFailed(spFolderMgr->GetFolder(request.nFolderID, spFolder.put()));
        if (!spFolder) {
            VELK_LOG(L"%s", kNoFolder);
            return 0;
        }
        VELK_LOG(
            L"@@@ [CToolBarWnd::ProcDeleteAllMsg] Start deleting all spam mails inside "
            L"folder...");
        // Every quarantined message goes, whatever its stamp says: when to
        // purge is the sender's decision.
        com_ptr<IQzMessage> spMessage;
        ThrowIfFailed(spFolder->GetFirstMessage(spMessage.put()));
        while (spMessage) {
            unique_bstr headers;
            ThrowIfFailed(spMessage->GetHeaderText(headers.put()));
            std::string upper = WideToAnsi(headers.get(), ::SysStringLen(headers.get()));
            if (!upper.empty())
                ::CharUpperBuffA(&upper[0], static_cast<DWORD>(upper.size()));
            if (IsQuarantinedHeaderBlock(upper)) {
                ThrowIfFailed(spMessage->Delete(kDeleteMode));
                VELK_LOG(L"@@@ [CToolBarWnd::ProcDeleteAllMsg] Spam mail deleted.");
            }
            ThrowIfFailed(spFolder->GetNextMessage(spMessage.put()));
        }
        LogOut(kPurgeName);
        return 1;
    } catch (...) {
        LogIncomplete(kPurgeName, kDeleteIncomplete);
        return 0;
    }
}

}  // namespace velk::actions
