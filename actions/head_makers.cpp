#include "actions/head_makers.h"

#include <cstring>
#include <new>

namespace velk::actions {
namespace {

char* DefaultAllocate(std::size_t size) {
    return new (std::nothrow) char[size];
}

HeadTextAllocator g_allocate = &DefaultAllocate;

// A copy of `text` of its exact length plus terminator; null on failure. A
// null `text` is copied as an empty one.
char* CopyText(const char* text) noexcept {
    if (!text)
        text = "";
    const std::size_t size = std::strlen(text) + 1;
    char* copy = g_allocate(size);
    if (copy)
        std::memcpy(copy, text, size);
    return copy;
}

}  // namespace

void HeadRecord::Free() noexcept {
    delete[] pszSecond;
    delete[] pszFirst;
    pszSecond = nullptr;
    pszFirst = nullptr;
}

void CopyHeadTexts(HeadRecord& record, const char* first, const char* second) noexcept {
    record.Free();
    record.nType = 0;
    record.pszSecond = CopyText(second);
    record.pszFirst = record.pszSecond ? CopyText(first) : nullptr;
    if (!record.pszSecond || !record.pszFirst)
        record.Free();
}

CReceivedHeadMaker g_ReceivedHeadMaker;
CFromHeadMaker g_FromHeadMaker;
CToHeadMaker g_ToHeadMaker;
CSubjectHeadMaker g_SubjectHeadMaker;
CCcHeadMaker g_CcHeadMaker;
CBccHeadMaker g_BccHeadMaker;
CDateHeadMaker g_DateHeadMaker;
CMimeVerHeadMaker g_MimeVerHeadMaker;
CContentTypeHeadMaker g_ContentTypeHeadMaker;
CReplyToHeadMaker g_ReplyToHeadMaker;
CMessageIDHeadMaker g_MessageIDHeadMaker;
CXTypeToHeadMaker g_XTypeToHeadMaker;

HeadMakerMap g_HeadMakerMap;

void BuildHeadMakerMap() {
    g_HeadMakerMap.clear();
    g_HeadMakerMap.emplace("received", &g_ReceivedHeadMaker);
    g_HeadMakerMap.emplace("from", &g_FromHeadMaker);
    g_HeadMakerMap.emplace("to", &g_ToHeadMaker);
    g_HeadMakerMap.emplace("subject", &g_SubjectHeadMaker);
    g_HeadMakerMap.emplace("cc", &g_CcHeadMaker);
    g_HeadMakerMap.emplace("bcc", &g_BccHeadMaker);
    g_HeadMakerMap.emplace("date", &g_DateHeadMaker);
    g_HeadMakerMap.emplace("mime-version", &g_MimeVerHeadMaker);
    g_HeadMakerMap.emplace("content-type", &g_ContentTypeHeadMaker);
    // Historical: the Reply-To maker answers to "return-path", and there is
    // no "reply-to" key. Kept as it always was.
    g_HeadMakerMap.emplace("return-path", &g_ReplyToHeadMaker);
    g_HeadMakerMap.emplace("message-id", &g_MessageIDHeadMaker);
    // g_XTypeToHeadMaker is deliberately left out of the registry.
}

void FreeHeadMakerMap() noexcept {
    HeadMakerMap().swap(g_HeadMakerMap);
}

void SetHeadTextAllocatorForTesting(HeadTextAllocator allocator) noexcept {
    g_allocate = allocator ? allocator : &DefaultAllocate;
}

}  // namespace velk::actions
