// SECURITY_ATTRIBUTES with a fixed DACL for the kinds of object the product
// creates (registry keys, files, events, ...).
//
// Seven access-allowed entries, one per well-known account, in this order:
// Administrators, Power Users, Local System, Authenticated Users, Users,
// Interactive, Creator Owner. The masks per kind are a fixed table that the
// other components of the product were built against.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "common_src/QzCommon/QzComn_Exception.h"

namespace QzCommon {
namespace AccessControl {

enum ObjectKind : std::uint32_t {
    kFile = 0,
    kDirectory = 1,
    kService = 2,
    kRegistryKey = 4,
    kProcess = 5,
    kThread = 6,
    kSyncSignalOnly = 9,
    kSyncFull = 10,
    kSyncWaitOnly = 11,
    kSyncFullSecondForm = 12,
};

constexpr std::uint32_t kAccountCount = 7;

// The seven masks for a kind in entry order; false for a kind of 13 or more.
bool LookupAccessMasks(std::uint32_t kind, std::uint32_t (&masks)[kAccountCount]) noexcept;

// Builds the self-relative descriptor for a kind. Throws
// AccessControl::Exception*: error 50 for a kind of 13 or more, else the
// system's code.
std::unique_ptr<BYTE[]> BuildSecurityDescriptor(std::uint32_t kind);

class SecurityAttributes {
public:
    // Never throws: an unknown kind (error 50) or a failure while building
    // leaves the descriptor empty, so the system's default security applies.
    SecurityAttributes(std::uint32_t kind, bool inheritHandle);
    ~SecurityAttributes();
    SecurityAttributes(const SecurityAttributes&) = delete;
    SecurityAttributes& operator=(const SecurityAttributes&) = delete;

    // For the system calls that take LPSECURITY_ATTRIBUTES.
    SECURITY_ATTRIBUTES* Get() noexcept { return &m_sa; }
    // Self-relative; null when building failed.
    PSECURITY_DESCRIPTOR GetDescriptor() const noexcept { return m_sa.lpSecurityDescriptor; }
    std::uint32_t GetKind() const noexcept { return m_dwKind; }
    bool GetInheritHandle() const noexcept { return m_bInheritHandle; }

private:
    SECURITY_ATTRIBUTES m_sa;
    std::unique_ptr<BYTE[]> m_pDescriptor;
    std::uint32_t m_dwKind;
    bool m_bInheritHandle;
};

}  // namespace AccessControl
}  // namespace QzCommon
