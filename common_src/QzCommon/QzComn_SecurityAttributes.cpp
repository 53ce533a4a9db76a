#include "common_src/QzCommon/QzComn_SecurityAttributes.h"

#include <new>

namespace QzCommon {
namespace AccessControl {
namespace {

// Reported in every AccessControl::Exception; other modules print it.
const char kSourceFile[] = "..\\..\\common_src\\QzCommon\\QzComn_SecurityAttributes";

// The rights per kind, in entry order (see the header). Power Users get fewer
// rights than Administrators and Creator Owner gets full rights on purpose;
// these are the product's values, not derived from a rule.
const std::uint32_t kMasks[13][kAccountCount] = {
    {0x13013F, 0x12002F, 0x13013F, 0x120029, 0x120029, 0x120029, 0x1F01FF},  // 0 file
    {0x1100C7, 0x100087, 0x1100C7, 0x100081, 0x100081, 0x100081, 0x1F01FF},  // 1 directory
    {0x101F7, 0x18D, 0x1F5, 0x185, 0x185, 0x185, 0xF01FF},                   // 2 service
    {0, 0, 0, 0, 0, 0, 0},                                                   // 3
    {0x1003F, 0x3F, 0x1003F, 0x20009, 0x20009, 0x20009, 0xF003F},            // 4 registry key
    {0x100FFB, 0x100E92, 0x100FFB, 0x100410, 0x100410, 0x100410, 0x1F0FFF},  // 5 process
    {0x1000FB, 0x10006A, 0x1000FB, 0x100048, 0x100048, 0x100048, 0x1F03FB},  // 6 thread
    {0, 0, 0, 0, 0, 0, 0},                                                   // 7
    {0, 0, 0, 0, 0, 0, 0},                                                   // 8
    {0x100002, 0x100002, 0x100002, 0x100002, 0x100002, 0x100002, 0x100002},  // 9 signal only
    {0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003, 0x1F0003},  // 10 sync, full
    {0x100001, 0x100001, 0x100001, 0x100001, 0x100001, 0x100001, 0x100001},  // 11 wait only
    {0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001, 0x1F0001},  // 12 sync, full
};

struct WellKnownSid {
    BYTE authority;
    BYTE subCount;
    DWORD sub[2];
};

// The accounts, in entry order.
const WellKnownSid kAccounts[kAccountCount] = {
    {5, 2, {32, 544}},  // Administrators       S-1-5-32-544
    {5, 2, {32, 547}},  // Power Users          S-1-5-32-547
    {5, 1, {18, 0}},    // Local System         S-1-5-18
    {5, 1, {11, 0}},    // Authenticated Users  S-1-5-11
    {5, 2, {32, 545}},  // Users                S-1-5-32-545
    {5, 1, {4, 0}},     // Interactive          S-1-5-4
    {3, 1, {0, 0}},     // Creator Owner        S-1-3-0
};

// Big enough for any SID with two sub-authorities.
constexpr DWORD kSidBytes = 8 + 4 * 2;

[[noreturn]] void ThrowLastError(unsigned line) {
    throw new Exception(::GetLastError(), kSourceFile, line);
}

}  // namespace

bool LookupAccessMasks(std::uint32_t kind, std::uint32_t (&masks)[kAccountCount]) noexcept {
    if (kind >= sizeof(kMasks) / sizeof(kMasks[0]))
        return false;
    for (std::uint32_t i = 0; i < kAccountCount; ++i)
        masks[i] = kMasks[kind][i];
    return true;
}

SecurityAttributes::SecurityAttributes(std::uint32_t kind, bool inheritHandle)
    : m_sa(), m_dwKind(kind), m_bInheritHandle(inheritHandle) {
    m_sa.nLength = sizeof(SECURITY_ATTRIBUTES);
    m_sa.bInheritHandle = inheritHandle ? TRUE : FALSE;
    m_sa.lpSecurityDescriptor = nullptr;
    // Callers create their object anyway; without a descriptor the system
    // applies its default security, which is the right fallback.
    auto error = Capture<Exception>([&] { m_pDescriptor = BuildSecurityDescriptor(kind); });
    if (!error)
        m_sa.lpSecurityDescriptor = m_pDescriptor.get();
}

SecurityAttributes::~SecurityAttributes() = default;

std::unique_ptr<BYTE[]> BuildSecurityDescriptor(std::uint32_t kind) {
    std::uint32_t masks[kAccountCount];
    if (!LookupAccessMasks(kind, masks))
        QZ_THROW(Exception, ERROR_NOT_SUPPORTED);

    BYTE sids[kAccountCount][kSidBytes];
    DWORD aclBytes = sizeof(ACL);
    for (std::uint32_t i = 0; i < kAccountCount; ++i) {
        SID_IDENTIFIER_AUTHORITY authority = {{0, 0, 0, 0, 0, kAccounts[i].authority}};
        if (!::InitializeSid(sids[i], &authority, kAccounts[i].subCount))
            ThrowLastError(__LINE__);
        for (BYTE s = 0; s < kAccounts[i].subCount; ++s)
            *::GetSidSubAuthority(sids[i], s) = kAccounts[i].sub[s];
        aclBytes += sizeof(ACCESS_ALLOWED_ACE) - sizeof(DWORD) + ::GetLengthSid(sids[i]);
    }

    std::unique_ptr<BYTE[]> acl(new (std::nothrow) BYTE[aclBytes]());
    if (!acl)
        QZ_THROW(Exception, ERROR_INVALID_HANDLE);
    PACL pAcl = reinterpret_cast<PACL>(acl.get());
    if (!::InitializeAcl(pAcl, aclBytes, ACL_REVISION))
        ThrowLastError(__LINE__);
    for (std::uint32_t i = 0; i < kAccountCount; ++i) {
        if (!::AddAccessAllowedAce(pAcl, ACL_REVISION, masks[i], sids[i]))
            ThrowLastError(__LINE__);
    }

    SECURITY_DESCRIPTOR absolute;
    if (!::InitializeSecurityDescriptor(&absolute, SECURITY_DESCRIPTOR_REVISION))
        ThrowLastError(__LINE__);
    if (!::SetSecurityDescriptorDacl(&absolute, TRUE, pAcl, FALSE))
        ThrowLastError(__LINE__);

    // The self-relative copy carries the DACL inside it, so the object owns
    // one block and the temporary ACL can go.
    DWORD bytes = 0;
    ::MakeSelfRelativeSD(&absolute, nullptr, &bytes);
    if (bytes == 0)
        ThrowLastError(__LINE__);
    std::unique_ptr<BYTE[]> descriptor(new (std::nothrow) BYTE[bytes]());
    if (!descriptor)
        QZ_THROW(Exception, ERROR_INVALID_HANDLE);
    if (!::MakeSelfRelativeSD(&absolute, descriptor.get(), &bytes))
        ThrowLastError(__LINE__);

    return descriptor;
}

}  // namespace AccessControl
}  // namespace QzCommon
