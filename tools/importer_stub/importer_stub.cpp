// VELK_OEImp.exe, the stand-in for the contact-import tool: started by the
// approved-senders page with
//     <blank>"<folder>WhiteList.dat" "<folder>BlackList.dat" <import identifier>
// it adds the user's contacts to the approved list, takes them out of the
// blocked list (importing them says the user knows them, as approving one on
// the page does), and writes both files, as the real tool does.
//
// Steered through the environment, which it inherits from the add-in:
//   VELK_IMPORTER_CONTACTS  a UTF-8 file of "name<TAB>address" lines to import
//                           (default: three sample contacts)
//   VELK_IMPORTER_LOG       a file that gets the command line as UTF-8, one
//                           line per run
//   VELK_IMPORTER_HOLD      the name of an event to wait for (at most 60 s)
//                           before touching the files
// Exit codes: 0 done, 2 bad command line, 3 a list could not be written.
#include <windows.h>

#include <fstream>
#include <string>
#include <vector>

#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"

namespace {

using velk::senders::SenderList;
using velk::senders::SenderListKind;

constexpr wchar_t kImportIdentifier[] = L"{0F4A9D63-2E7B-4C58-A1D9-6B3E85C27F14}";

std::wstring Environment(const wchar_t* name) {
    wchar_t value[1024] = L"";
    const DWORD n = ::GetEnvironmentVariableW(name, value, 1024);
    return n > 0 && n < 1024 ? std::wstring(value, n) : std::wstring();
}

// Blank-separated words; double quotes group blanks and are dropped.
std::vector<std::wstring> Words(const std::wstring& line) {
    std::vector<std::wstring> words;
    std::wstring word;
    bool quoted = false, inWord = false;
    for (wchar_t c : line) {
        if (c == L'"') {
            quoted = !quoted;
            inWord = true;
        } else if ((c == L' ' || c == L'\t') && !quoted) {
            if (inWord)
                words.push_back(word);
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words.push_back(word);
    return words;
}

struct Contact {
    std::wstring name;
    std::wstring address;
};

std::vector<Contact> Contacts() {
    const std::wstring file = Environment(L"VELK_IMPORTER_CONTACTS");
    if (file.empty()) {
        return {{L"Marta Kowalski", L"marta.kowalski@example.org"},
                {L"Jonas Berg", L"jonas@berg.example"},
                {L"Ines Duarte", L"ines.duarte@example.net"}};
    }
    std::vector<Contact> contacts;
    std::ifstream in(file.c_str(), std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t tab = line.find('\t');
        if (tab == std::string::npos)
            continue;
        contacts.push_back(
            {velk::senders::ToWide(velk::senders::Utf8ToUtf16(line.substr(0, tab))),
             velk::senders::ToWide(velk::senders::Utf8ToUtf16(line.substr(tab + 1)))});
    }
    return contacts;
}

void Record(const std::wstring& command_line) {
    const std::wstring file = Environment(L"VELK_IMPORTER_LOG");
    if (file.empty())
        return;
    std::ofstream out(file.c_str(), std::ios::binary | std::ios::app);
    out << velk::senders::Utf16ToUtf8(velk::senders::ToU16(command_line)) << '\n';
}

void WaitIfHeld() {
    const std::wstring name = Environment(L"VELK_IMPORTER_HOLD");
    if (name.empty())
        return;
    if (HANDLE event = ::OpenEventW(SYNCHRONIZE, FALSE, name.c_str())) {
        ::WaitForSingleObject(event, 60000);
        ::CloseHandle(event);
    }
}

}  // namespace

int wmain() {
    const std::wstring command_line = ::GetCommandLineW();
    Record(command_line);
    // Started with the three words alone; from a shell the program comes first.
    std::vector<std::wstring> words = Words(command_line);
    if (words.size() == 4)
        words.erase(words.begin());
    if (words.size() != 3 || words[2] != kImportIdentifier)
        return 2;
    WaitIfHeld();

    SenderList approved(SenderListKind::kApproved);
    SenderList blocked(SenderListKind::kBlocked);
    velk::senders::LoadSenders(approved, words[0]);
    velk::senders::LoadSenders(blocked, words[1]);
    for (const Contact& c : Contacts()) {
        if (velk::senders::AddSender(approved, c.address.c_str(), c.name.c_str()) ==
            velk::senders::kSenderAdded)
            velk::senders::RemoveSender(blocked, c.address.c_str());
    }
    const bool saved = velk::senders::SaveSenders(blocked, words[1]) &&
                       velk::senders::SaveSenders(approved, words[0]);
    return saved ? 0 : 3;
}
