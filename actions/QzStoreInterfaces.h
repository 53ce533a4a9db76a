// The message store's COM interfaces. The store server is not ours: these
// declarations are the whole contract, and the slot of every method (its
// position in the method table, IUnknown's three counted from 0) is what the
// server implements. Reserved slots are declared so the positions hold; they
// are never called.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

// {6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048}
inline constexpr CLSID CLSID_QzStoreAccess = {
    0x6E3B9A14, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};
// {6E3B9A38-0C57-4D2E-B8F1-93A2C5D7E048}
inline constexpr IID IID_IQzFolderMgr = {
    0x6E3B9A38, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};

struct IQzFolder;
struct IQzMessage;

struct IQzFolderMgr : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved9() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved10() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved11() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved12() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFolder(ULONG folderId, IQzFolder** folder) = 0;  // 13
    virtual HRESULT STDMETHODCALLTYPE Reserved14() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved15() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved16() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved17() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved18() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved19() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved20() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved21() = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveMessage(ULONG srcFolderId, ULONG dstFolderId,
                                                  ULONG msgId, ULONG* newMsgId) = 0;  // 22
};

struct IQzFolder : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved9() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFirstMessage(IQzMessage** msg) = 0;              // 10
    virtual HRESULT STDMETHODCALLTYPE GetNextMessage(IQzMessage** msg) = 0;               // 11
    virtual HRESULT STDMETHODCALLTYPE GetMessage(ULONG msgId, IQzMessage** msg) = 0;      // 12
    virtual HRESULT STDMETHODCALLTYPE Reserved13() = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteMessage(ULONG msgId, ULONG mode, ULONG* result) = 0;  // 14
};

struct IQzMessage : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved9() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved10() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved11() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved12() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved13() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved14() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved15() = 0;
    virtual HRESULT STDMETHODCALLTYPE PostProcess(ULONG* ignored) = 0;                    // 16
    virtual HRESULT STDMETHODCALLTYPE Delete(ULONG mode) = 0;                             // 17
    virtual HRESULT STDMETHODCALLTYPE Reserved18() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved19() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved20() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHeaderText(BSTR* headerBlock) = 0;               // 21
    virtual HRESULT STDMETHODCALLTYPE Reserved22() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved23() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved24() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved25() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved26() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved27() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved28() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved29() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved30() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved31() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBodyHandle(ULONG zero1, ULONG zero2,
                                                    ULONG* bodyHandle) = 0;               // 32
    virtual HRESULT STDMETHODCALLTYPE Reserved33() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved34() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved35() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved36() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved37() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved38() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved39() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved40() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved41() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved42() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved43() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved44() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved45() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved46() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetPropById(ULONG bodyHandle, ULONG propId, BSTR value,
                                                  ULONG* ignored) = 0;                    // 47
    virtual HRESULT STDMETHODCALLTYPE SetHeader(ULONG bodyHandle, BSTR name, BSTR value,
                                                ULONG* ignored) = 0;                      // 48
    virtual HRESULT STDMETHODCALLTYPE QueryHeader(ULONG bodyHandle, BSTR name, BYTE* found,
                                                  BSTR* value) = 0;                       // 49
    virtual HRESULT STDMETHODCALLTYPE Reserved50() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved51() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved52() = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(ULONG* ignored) = 0;                         // 53
};
