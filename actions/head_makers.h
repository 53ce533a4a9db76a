// The header makers: one small class per well-known header, each turning two
// texts into a typed HeadRecord, and a process-wide registry from lower-case
// header names to the maker instances, built when the add-in loads and freed
// when it unloads.
//
// Nothing in the add-in looks headers up here; the family is kept because the
// add-in has always carried it, with its two quirks: "return-path" leads to
// the Reply-To maker (there is no "reply-to" key), and the X-Type-To maker
// has an instance but no key.
//
// Platform-free: tested natively.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace velk::actions {

// Owns two private copies of the texts given to a maker. The field order is
// the one the family has always had: the second text is stored first.
struct HeadRecord {
    std::int32_t nType = 0;
    char* pszSecond = nullptr;
    char* pszFirst = nullptr;

    HeadRecord() = default;
    ~HeadRecord() { Free(); }
    HeadRecord(const HeadRecord&) = delete;
    HeadRecord& operator=(const HeadRecord&) = delete;

    void Free() noexcept;
};

class IHeadMaker {
public:
    virtual ~IHeadMaker() = default;
    // Fills `record` with copies of both texts and the maker's type id. A copy
    // that cannot be allocated leaves both strings null; nothing is thrown.
    virtual void MakeHead(HeadRecord& record, const char* first, const char* second) noexcept = 0;
};

// Copies the texts (second, then first) into `record`, which is reset first;
// on a failed allocation both strings end up null. Leaves nType at 0.
void CopyHeadTexts(HeadRecord& record, const char* first, const char* second) noexcept;

template <std::int32_t Type>
class CHeadMakerOf : public IHeadMaker {
public:
    static constexpr std::int32_t kType = Type;
    void MakeHead(HeadRecord& record, const char* first, const char* second) noexcept override {
        CopyHeadTexts(record, first, second);
        record.nType = Type;
    }
};

class CReceivedHeadMaker final : public CHeadMakerOf<1> {};
class CFromHeadMaker final : public CHeadMakerOf<2> {};
class CToHeadMaker final : public CHeadMakerOf<3> {};
class CSubjectHeadMaker final : public CHeadMakerOf<4> {};
class CCcHeadMaker final : public CHeadMakerOf<5> {};
class CBccHeadMaker final : public CHeadMakerOf<6> {};
class CDateHeadMaker final : public CHeadMakerOf<7> {};
class CMimeVerHeadMaker final : public CHeadMakerOf<8> {};
class CContentTypeHeadMaker final : public CHeadMakerOf<9> {};
class CReplyToHeadMaker final : public CHeadMakerOf<10> {};
class CMessageIDHeadMaker final : public CHeadMakerOf<11> {};
class CXTypeToHeadMaker final : public CHeadMakerOf<12> {};

// The one instance of each maker, alive for the whole process.
extern CReceivedHeadMaker g_ReceivedHeadMaker;
extern CFromHeadMaker g_FromHeadMaker;
extern CToHeadMaker g_ToHeadMaker;
extern CSubjectHeadMaker g_SubjectHeadMaker;
extern CCcHeadMaker g_CcHeadMaker;
extern CBccHeadMaker g_BccHeadMaker;
extern CDateHeadMaker g_DateHeadMaker;
extern CMimeVerHeadMaker g_MimeVerHeadMaker;
extern CContentTypeHeadMaker g_ContentTypeHeadMaker;
extern CReplyToHeadMaker g_ReplyToHeadMaker;
extern CMessageIDHeadMaker g_MessageIDHeadMaker;
extern CXTypeToHeadMaker g_XTypeToHeadMaker;

// Lower-case header name -> maker instance (not owned).
using HeadMakerMap = std::map<std::string, IHeadMaker*>;
extern HeadMakerMap g_HeadMakerMap;

// At load: fills the registry with its eleven keys (starting from empty).
void BuildHeadMakerMap();
// At unload: frees every node of the registry.
void FreeHeadMakerMap() noexcept;

// Tests make an allocation fail through this; null restores the default
// (new (std::nothrow) char[size]).
using HeadTextAllocator = char* (*)(std::size_t size);
void SetHeadTextAllocatorForTesting(HeadTextAllocator allocator) noexcept;

}  // namespace velk::actions
