// The sender lists for Windows callers, whose text is wchar_t: edit-control
// texts, settings values and paths. A null address is refused here the way
// the pages rely on: Add answers kSenderListFull, the queries answer false,
// Modify and Remove change nothing.
#pragma once

#include <string>
#include <vector>

#include "senders/sender_list.h"

namespace velk::senders {

std::wstring SenderListPathW(const std::wstring& folder, SenderListKind kind);

bool LoadSenders(SenderList& list, const std::wstring& path);
bool SaveSenders(SenderList& list, const std::wstring& path);

int AddSender(SenderList& list, const wchar_t* address, const wchar_t* name);
bool SenderExists(const SenderList& list, const wchar_t* address);
bool IsSameSender(const SenderList& list, const wchar_t* address, const wchar_t* name);
bool ModifySender(SenderList& list, const wchar_t* oldAddress, const wchar_t* newName,
                  const wchar_t* newAddress);
void RemoveSender(SenderList& list, const wchar_t* address);

struct SenderEntryW {
    std::wstring key;
    std::wstring name;
    std::wstring address;
};
// The entries in key order, for filling a list control.
std::vector<SenderEntryW> SenderEntries(const SenderList& list);

}  // namespace velk::senders
