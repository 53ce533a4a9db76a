#include "senders/sender_list_wide.h"

#include "senders/sender_text.h"

namespace velk::senders {

namespace {
std::u16string U16(const wchar_t* text) {
    return text ? ToU16(text) : std::u16string();
}
}  // namespace

std::wstring SenderListPathW(const std::wstring& folder, SenderListKind kind) {
    return ToWide(SenderListPath(ToU16(folder), kind));
}

bool LoadSenders(SenderList& list, const std::wstring& path) {
    return list.Load(ToU16(path));
}

bool SaveSenders(SenderList& list, const std::wstring& path) {
    return list.Save(ToU16(path));
}

int AddSender(SenderList& list, const wchar_t* address, const wchar_t* name) {
    if (!address)
        return kSenderListFull;
    SenderRecord record{U16(name), ToU16(address)};
    return list.Add(record.address, record);
}

bool SenderExists(const SenderList& list, const wchar_t* address) {
    return address && list.Exists(ToU16(address));
}

bool IsSameSender(const SenderList& list, const wchar_t* address, const wchar_t* name) {
    return address && list.IsSameRecord(ToU16(address), U16(name));
}

bool ModifySender(SenderList& list, const wchar_t* oldAddress, const wchar_t* newName,
                  const wchar_t* newAddress) {
    if (!oldAddress || !newAddress)
        return false;
    return list.Modify(ToU16(oldAddress), U16(newName), ToU16(newAddress));
}

void RemoveSender(SenderList& list, const wchar_t* address) {
    if (address)
        list.Remove(ToU16(address));
}

std::vector<SenderEntryW> SenderEntries(const SenderList& list) {
    std::vector<SenderEntryW> out;
    for (const auto& entry : list.Entries()) {
        out.push_back(
            {ToWide(entry.first), ToWide(entry.second.name), ToWide(entry.second.address)});
    }
    return out;
}

}  // namespace velk::senders
