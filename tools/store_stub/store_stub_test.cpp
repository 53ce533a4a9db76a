// The store stand-in through COM, as the add-in reaches it: registration,
// header rewriting, moves, deletes and the journal, checked in the files.
#include "tools/store_stub/store_stub_test_support.h"

#include <vector>

namespace velk::tools::testing {
namespace {

using velk::win32::unique_hkey;

const std::string kMessage =
    "Return-Path: <a@example.com>\r\n"
    "Subject: Cheap\r\n"
    "\twatches\r\n"
    "x-has-been-detected_normal: 0\r\n"
    "From: a@example.com\r\n"
    "\r\n"
    "Subject: body text, not a header\r\n";

std::wstring RegString(HKEY root, const wchar_t* key, const wchar_t* name) {
    unique_hkey k;
    if (::RegOpenKeyExW(root, key, 0, KEY_READ, k.put()) != ERROR_SUCCESS)
        return L"<no key>";
    wchar_t value[MAX_PATH] = {};
    DWORD size = sizeof value - sizeof(wchar_t), type = 0;
    if (::RegQueryValueExW(k.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(value), &size) !=
            ERROR_SUCCESS ||
        type != REG_SZ)
        return L"<no value>";
    return value;
}

using StoreStubRegistration = StoreStubTest;

TEST_F(StoreStubRegistration, WritesTheInprocServerOfThisModuleAndComLoadsThatModule) {
    const wchar_t* key =
        L"Software\\Classes\\CLSID\\{6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048}\\InprocServer32";
    wchar_t path[MAX_PATH];
    ::GetModuleFileNameW(store().module(), path, MAX_PATH);
    EXPECT_EQ(std::wstring(path), RegString(HKEY_LOCAL_MACHINE, key, nullptr));
    EXPECT_EQ(L"Apartment", RegString(HKEY_LOCAL_MACHINE, key, L"ThreadingModel"));

    // The object COM creates runs this module's code: the test's control
    // calls steer the very server the code under test uses.
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ASSERT_TRUE(mgr);
    void* first_method = (*reinterpret_cast<void***>(mgr.get()))[0];
    HMODULE owner = nullptr;
    ASSERT_TRUE(::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCWSTR>(first_method), &owner));
    EXPECT_EQ(store().module(), owner);
    EXPECT_EQ(1, store().LiveObjects());
}

TEST_F(StoreStubRegistration, UnregisterRemovesTheClassAndRegisterBringsItBack) {
    ASSERT_EQ(S_OK, store().Unregister());
    com_ptr<IQzFolderMgr> mgr;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                                      IID_IQzFolderMgr, mgr.put_void()));
    EXPECT_EQ(S_OK, store().Unregister());  // twice is fine
    ASSERT_EQ(S_OK, store().Register());
    EXPECT_TRUE(CreateMgr());
}

using StoreStubHeaders = StoreStubTest;

TEST_F(StoreStubHeaders, SetHeaderReplacesOrAddsAndCommitWritesTheFileByteForByte) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
    ULONG handle = 0;
    ASSERT_EQ(S_OK, msg->GetBodyHandle(0, 0, &handle));
    EXPECT_EQ(STORE_STUB_BODY_HANDLE, handle);

    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"X-Has-Been-Detected_Normal", L"1", handle));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"X-Nuvexa-AntispamAddin-Checked", L"1", handle));
    EXPECT_EQ(kMessage, File(1, 7)) << "nothing reaches the file before Commit";

    ASSERT_EQ(S_OK, Commit(msg.get()));
    EXPECT_EQ(
        "Return-Path: <a@example.com>\r\n"
        "Subject: Cheap\r\n"
        "\twatches\r\n"
        "X-Has-Been-Detected_Normal: 1\r\n"
        "From: a@example.com\r\n"
        "X-Nuvexa-AntispamAddin-Checked: 1\r\n"
        "\r\n"
        "Subject: body text, not a header\r\n",
        File(1, 7));
    EXPECT_FALSE(FileExists(MessagePath(1, 7) + L".tmp"));
}

TEST_F(StoreStubHeaders, SubjectPropertyReplacesAFoldedSubjectOrAddsOne) {
    PutFile(1, 1, kMessage);
    PutFile(1, 2, "From: b\n\nbody\n");
    com_ptr<IQzFolder> folder = Folder(CreateMgr().get(), 1);
    ULONG ignored = 0;
    for (ULONG id : {1u, 2u}) {
        com_ptr<IQzMessage> msg = Message(folder.get(), id);
        EXPECT_EQ(S_OK, msg->SetPropById(STORE_STUB_BODY_HANDLE, 5, Bstr(L"[SPAM] Cheap").get(),
                                         &ignored));
        EXPECT_EQ(E_INVALIDARG,
                  msg->SetPropById(STORE_STUB_BODY_HANDLE, 4, Bstr(L"x").get(), &ignored))
            << "only the subject property exists";
        ASSERT_EQ(S_OK, Commit(msg.get()));
    }
    EXPECT_EQ(
        "Return-Path: <a@example.com>\r\n"
        "Subject: [SPAM] Cheap\r\n"
        "x-has-been-detected_normal: 0\r\n"
        "From: a@example.com\r\n"
        "\r\n"
        "Subject: body text, not a header\r\n",
        File(1, 1));
    EXPECT_EQ("From: b\nSubject: [SPAM] Cheap\n\nbody\n", File(1, 2));
}

TEST_F(StoreStubHeaders, QueryHeaderAndHeaderTextSeeTheUncommittedChanges) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
    BYTE found = 9;
    unique_bstr value;
    ASSERT_EQ(S_OK, msg->QueryHeader(STORE_STUB_BODY_HANDLE, Bstr(L"SUBJECT").get(), &found,
                                     value.put()));
    EXPECT_EQ(1, found);
    EXPECT_EQ(L"Cheap\twatches", Text(value.get()));

    ASSERT_EQ(S_OK,
              msg->QueryHeader(STORE_STUB_BODY_HANDLE,
                               Bstr(L"X-Nuvexa-AntispamAddin-Checked").get(), &found, value.put()));
    EXPECT_EQ(0, found);
    EXPECT_EQ(nullptr, value.get());

    ASSERT_EQ(S_OK, SetHeader(msg.get(), L"X-Nuvexa-AntispamAddin-Checked", L"1"));
    ASSERT_EQ(S_OK,
              msg->QueryHeader(STORE_STUB_BODY_HANDLE,
                               Bstr(L"x-nuvexa-antispamaddin-checked").get(), &found, value.put()));
    EXPECT_EQ(1, found);
    EXPECT_EQ(L"1", Text(value.get()));

    unique_bstr block;
    ASSERT_EQ(S_OK, msg->GetHeaderText(block.put()));
    EXPECT_EQ(
        L"Return-Path: <a@example.com>\r\n"
        L"Subject: Cheap\r\n"
        L"\twatches\r\n"
        L"x-has-been-detected_normal: 0\r\n"
        L"From: a@example.com\r\n"
        L"X-Nuvexa-AntispamAddin-Checked: 1\r\n",
        Text(block.get()));
}

TEST_F(StoreStubHeaders, ReleaseWithoutCommitLeavesTheFileAndBadFieldsAreRefused) {
    PutFile(1, 7, kMessage);
    {
        com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
        EXPECT_EQ(S_OK, SetHeader(msg.get(), L"Subject", L"changed"));
        EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L"X-A", L"1\r\nX-Injected: 1"));
        EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L"", L"1"));
        EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L" X-Leading-Blank", L"1"));
    }
    EXPECT_EQ(kMessage, File(1, 7));
    EXPECT_EQ(0u, store().ContractViolations()) << "bad fields are not contract breaches";
}

TEST_F(StoreStubHeaders, NonAsciiTextIsWrittenAsUtf8AndAnAnsiFileStillReads) {
    PutFile(1, 1, "Subject: caf\xE9\r\n\r\n");  // not UTF-8: the ANSI code page
    com_ptr<IQzFolder> folder = Folder(CreateMgr().get(), 1);
    com_ptr<IQzMessage> msg = Message(folder.get(), 1);
    unique_bstr block;
    ASSERT_EQ(S_OK, msg->GetHeaderText(block.put()));
    wchar_t expected[32];
    ::MultiByteToWideChar(CP_ACP, 0, "Subject: caf\xE9\r\n", -1, expected, 32);
    EXPECT_EQ(std::wstring(expected), Text(block.get()));

    ASSERT_EQ(S_OK, SetHeader(msg.get(), L"Subject", L"gr\u00FC\u00DF \u20AC"));
    ASSERT_EQ(S_OK, Commit(msg.get()));
    EXPECT_EQ("Subject: gr\xC3\xBC\xC3\x9F \xE2\x82\xAC\r\n\r\n", File(1, 1));
    ASSERT_EQ(S_OK, Message(folder.get(), 1)->GetHeaderText(block.put()));
    EXPECT_EQ(L"Subject: gr\u00FC\u00DF \u20AC\r\n", Text(block.get()));
}

TEST_F(StoreStubHeaders, HeaderCallsWithAnotherBodyHandleFailAsContractBreaches) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(Folder(CreateMgr().get(), 1).get(), 7);
    ULONG handle = 0;
    EXPECT_EQ(E_INVALIDARG, msg->GetBodyHandle(1, 0, &handle));
    EXPECT_EQ(0u, handle);
    store().ClearJournal();
    EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L"X-A", L"1", 0));
    BYTE found = 0;
    unique_bstr value;
    EXPECT_EQ(E_INVALIDARG, msg->QueryHeader(7, Bstr(L"Subject").get(), &found, value.put()));
    EXPECT_EQ(2u, store().ContractViolations());
    EXPECT_EQ((std::vector<std::wstring>{L"SetHeader(X-A, 1) with body handle 0",
                                         L"QueryHeader(Subject) with body handle 7"}),
              store().JournalLines());
}

using StoreStubFiles = StoreStubTest;

TEST_F(StoreStubFiles, MoveTakesTheNextFreeIdAndCarriesTheBytes) {
    PutFile(1, 7, kMessage);
    PutFile(2, 3, "A: 1\r\n\r\n");
    PutFile(2, 9, "A: 2\r\n\r\n");
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ULONG new_id = 0;
    ASSERT_EQ(S_OK, mgr->MoveMessage(1, 2, 7, &new_id));
    EXPECT_EQ(10u, new_id);
    EXPECT_FALSE(FileExists(MessagePath(1, 7)));
    EXPECT_EQ(kMessage, File(2, 10));

    ASSERT_EQ(S_OK, mgr->MoveMessage(2, 1, 10, &new_id));
    EXPECT_EQ(1u, new_id) << "an empty folder starts at 1";
    EXPECT_EQ(kMessage, File(1, 1));
}

TEST_F(StoreStubFiles, MoveFailsWithNewIdZeroAndMovesNothing) {
    PutFile(1, 7, kMessage);
    ::CreateDirectoryW(FolderDir(2).c_str(), nullptr);
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ULONG new_id = 99;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), mgr->MoveMessage(1, 2, 8, &new_id));
    EXPECT_EQ(0u, new_id);
    new_id = 99;
    EXPECT_EQ(E_INVALIDARG, mgr->MoveMessage(1, 1, 7, &new_id)) << "same folder";
    EXPECT_EQ(0u, new_id);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), mgr->MoveMessage(1, 5, 7, &new_id));
    EXPECT_EQ(E_POINTER, mgr->MoveMessage(1, 2, 7, nullptr));
    EXPECT_EQ(kMessage, File(1, 7));
    EXPECT_EQ(std::vector<ULONG>{}, store().ListMessages(2));
}

TEST_F(StoreStubFiles, BothDeletesRemoveTheFileAndALaterCommitDoesNotBringItBack) {
    PutFile(1, 1, kMessage);
    PutFile(1, 2, kMessage);
    com_ptr<IQzFolder> folder = Folder(CreateMgr().get(), 1);
    com_ptr<IQzMessage> first = Message(folder.get(), 1);

    ULONG result = 0;
    EXPECT_EQ(E_INVALIDARG, folder->DeleteMessage(2, 0, &result)) << "mode 1 only";
    ASSERT_EQ(S_OK, folder->DeleteMessage(2, 1, &result));
    EXPECT_EQ(1u, result);
    EXPECT_FALSE(FileExists(MessagePath(1, 2)));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), folder->DeleteMessage(2, 1, &result));

    ASSERT_EQ(S_OK, SetHeader(first.get(), L"X-A", L"1"));
    ASSERT_EQ(S_OK, first->Delete(1));
    EXPECT_FALSE(FileExists(MessagePath(1, 1)));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), Commit(first.get()));
    EXPECT_FALSE(FileExists(MessagePath(1, 1)));
}

TEST_F(StoreStubFiles, EnumerationGoesByIdAndSurvivesDeletingTheCurrentMessage) {
    for (ULONG id : {12u, 3u, 7u})
        PutFile(1, id, "Id: " + std::to_string(id) + "\r\n\r\n");
    WriteFileBytes(FolderDir(1) + L"\\notes.txt", "not a message");
    WriteFileBytes(FolderDir(1) + L"\\007.eml", "leading zeros: not an id");
    com_ptr<IQzFolder> folder = Folder(CreateMgr().get(), 1);

    com_ptr<IQzMessage> msg;
    EXPECT_EQ(E_UNEXPECTED, folder->GetNextMessage(msg.put()));
    std::vector<std::wstring> seen;
    ASSERT_EQ(S_OK, folder->GetFirstMessage(msg.put()));
    while (msg) {
        unique_bstr block;
        ASSERT_EQ(S_OK, msg->GetHeaderText(block.put()));
        seen.push_back(Text(block.get()));
        ASSERT_EQ(S_OK, msg->Delete(1));
        ASSERT_EQ(S_OK, folder->GetNextMessage(msg.put()));
    }
    EXPECT_EQ((std::vector<std::wstring>{L"Id: 3\r\n", L"Id: 7\r\n", L"Id: 12\r\n"}), seen);
    EXPECT_EQ(std::vector<ULONG>{}, store().ListMessages(1));
    EXPECT_EQ(S_OK, folder->GetFirstMessage(msg.put()));
    EXPECT_FALSE(msg) << "an empty folder ends at once";
}

TEST_F(StoreStubFiles, MissingFoldersAndMessagesFailWithNullOuts) {
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    com_ptr<IQzFolder> folder;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), mgr->GetFolder(4, folder.put()));
    EXPECT_FALSE(folder);
    PutFile(1, 1, kMessage);
    folder = Folder(mgr.get(), 1);
    com_ptr<IQzMessage> msg;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), folder->GetMessage(2, msg.put()));
    EXPECT_FALSE(msg);
}

TEST_F(StoreStubFiles, MemoryModeBehavesAlikeAndTouchesNoFile) {
    ASSERT_EQ(S_OK, store().UseMemoryStore());
    ASSERT_EQ(S_OK, store().PutMessage(1, 7, kMessage));
    ASSERT_EQ(S_OK, store().CreateFolder(2));
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    {
        com_ptr<IQzMessage> msg = Message(Folder(mgr.get(), 1).get(), 7);
        ASSERT_EQ(S_OK, SetHeader(msg.get(), L"From", L"c@example.com"));
        ASSERT_EQ(S_OK, Commit(msg.get()));
    }
    ULONG new_id = 0;
    ASSERT_EQ(S_OK, mgr->MoveMessage(1, 2, 7, &new_id));
    EXPECT_EQ(1u, new_id);
    bool exists = true;
    store().ReadMessage(1, 7, &exists);
    EXPECT_FALSE(exists);
    std::string moved = store().ReadMessage(2, 1);
    EXPECT_NE(std::string::npos, moved.find("From: c@example.com\r\n\r\nSubject: body text"));
    EXPECT_FALSE(FileExists(FolderDir(1)));
    EXPECT_FALSE(FileExists(FolderDir(2)));
}

using StoreStubJournal = StoreStubTest;

TEST_F(StoreStubJournal, RecordsEveryCallInOrderWithItsArgumentsTargetAndResult) {
    PutFile(1, 7, kMessage);
    ::CreateDirectoryW(FolderDir(2).c_str(), nullptr);
    {
        com_ptr<IQzFolderMgr> mgr = CreateMgr();
        com_ptr<IQzMessage> msg = Message(Folder(mgr.get(), 1).get(), 7);
        ULONG handle = 0, ignored = 0, new_id = 0;
        msg->GetBodyHandle(0, 0, &handle);
        BYTE found = 0;
        unique_bstr value;
        msg->QueryHeader(handle, Bstr(L"x-has-been-detected_normal").get(), &found, value.put());
        SetHeader(msg.get(), L"x-has-been-detected_spam", L"1");
        msg->SetPropById(handle, 5, Bstr(L"[SPAM] Cheap").get(), &ignored);
        msg->PostProcess(&ignored);
        Commit(msg.get());
        mgr->MoveMessage(1, 2, 7, &new_id);
        mgr->MoveMessage(1, 2, 7, &new_id);
    }
    EXPECT_EQ((std::vector<std::wstring>{
                  L"CreateInstance(IQzFolderMgr) @- -> 0x00000000",
                  L"GetFolder(1) @- -> 0x00000000",
                  L"GetMessage(7) @1 -> 0x00000000",
                  L"GetBodyHandle(0, 0) @1/7 -> 0x00000000",
                  L"QueryHeader(x-has-been-detected_normal) @1/7 -> 0x00000000",
                  L"SetHeader(x-has-been-detected_spam, 1) @1/7 -> 0x00000000",
                  L"SetPropById(5, [SPAM] Cheap) @1/7 -> 0x00000000",
                  L"PostProcess() @1/7 -> 0x00000000",
                  L"Commit() @1/7 -> 0x00000000",
                  L"MoveMessage(1, 2, 7) @- -> 0x00000000",
                  L"MoveMessage(1, 2, 7) @- -> 0x80070002",
              }),
              store().JournalLines(STORE_STUB_JOURNAL_TARGET | STORE_STUB_JOURNAL_RESULT));
    EXPECT_EQ(L"CreateInstance(IQzFolderMgr)", store().JournalLines().front());

    store().ClearJournal();
    EXPECT_EQ(L"", store().Journal());
    store().EnableJournal(false);
    CreateMgr();
    EXPECT_EQ(L"", store().Journal()) << "switched off for benchmarks";
}

TEST_F(StoreStubJournal, ReservedSlotsAnswerNotImplementedAndCountAsBreaches) {
    PutFile(1, 7, kMessage);
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    com_ptr<IQzFolder> folder = Folder(mgr.get(), 1);
    com_ptr<IQzMessage> msg = Message(folder.get(), 7);
    store().ClearJournal();
    EXPECT_EQ(E_NOTIMPL, mgr->Reserved14());
    EXPECT_EQ(E_NOTIMPL, folder->Reserved13());
    EXPECT_EQ(E_NOTIMPL, msg->Reserved22());
    EXPECT_EQ(E_NOTIMPL, msg->Reserved52());
    EXPECT_EQ(4u, store().ContractViolations());
    EXPECT_EQ((std::vector<std::wstring>{L"IQzFolderMgr::Reserved14()", L"IQzFolder::Reserved13()",
                                         L"IQzMessage::Reserved22()", L"IQzMessage::Reserved52()"}),
              store().JournalLines());
    store().Reset();
    EXPECT_EQ(0u, store().ContractViolations());
}

}  // namespace
}  // namespace velk::tools::testing
