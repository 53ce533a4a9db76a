// The store stand-in through COM, as the add-in reaches it: registration,
// header rewriting, moves, deletes and the journal, checked in the files.
// The header block rules themselves are eml_header's.
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
    "\r\n"
    "Subject: body text, not a header\r\n";

using StoreStubRegistration = StoreStubTest;

TEST_F(StoreStubRegistration, ComCreatesTheObjectsOfThisModuleUntilUnregistered) {
    unique_hkey key;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegOpenKeyExW(HKEY_LOCAL_MACHINE,
                              L"Software\\Classes\\CLSID\\{6E3B9A14-0C57-4D2E-B8F1-93A2C5D7E048}"
                              L"\\InprocServer32",
                              0, KEY_READ, key.put()));
    wchar_t model[32] = {};
    DWORD size = sizeof model - sizeof(wchar_t);
    ::RegQueryValueExW(key.get(), L"ThreadingModel", nullptr, nullptr,
                       reinterpret_cast<BYTE*>(model), &size);
    EXPECT_STREQ(L"Apartment", model);

    // The control calls steer the very server the code under test uses.
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ASSERT_TRUE(mgr);
    HMODULE owner = nullptr;
    ASSERT_TRUE(::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCWSTR>((*reinterpret_cast<void***>(mgr.get()))[0]), &owner));
    EXPECT_EQ(store().module(), owner);

    ASSERT_EQ(S_OK, store().Unregister());
    com_ptr<IQzFolderMgr> none;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                                      IID_IQzFolderMgr, none.put_void()));
    ASSERT_EQ(S_OK, store().Register());
}

using StoreStubHeaders = StoreStubTest;

TEST_F(StoreStubHeaders, ChangesAreSeenAtOnceAndReachTheFileOnlyAtCommit) {
    Put(1, 7, kMessage);
    Put(1, 8, kMessage);
    com_ptr<IQzMessage> msg = Message(1, 7);
    ULONG handle = 0, ignored = 0;
    ASSERT_EQ(S_OK, msg->GetBodyHandle(0, 0, &handle));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"X-Has-Been-Detected_Normal", L"1", handle));
    EXPECT_EQ(S_OK, SetHeader(msg.get(), L"X-Nuvexa-AntispamAddin-Checked", L"1", handle));
    // Property 5 is the subject, the only property there is.
    EXPECT_EQ(S_OK, msg->SetPropById(handle, 5, Bstr(L"[SPAM] Cheap").get(), &ignored));
    EXPECT_EQ(E_INVALIDARG, msg->SetPropById(handle, 4, Bstr(L"x").get(), &ignored));
    BYTE found = 0;
    unique_bstr value;
    ASSERT_EQ(S_OK, msg->QueryHeader(handle, Bstr(L"x-nuvexa-antispamaddin-checked").get(), &found,
                                     value.put()));
    EXPECT_EQ(1, found);
    EXPECT_EQ(L"1", Text(value.get()));
    EXPECT_EQ(kMessage, File(1, 7)) << "nothing reaches the file before Commit";
    {
        com_ptr<IQzMessage> dropped = Message(1, 8);
        EXPECT_EQ(S_OK, SetHeader(dropped.get(), L"Subject", L"changed"));
    }
    EXPECT_EQ(kMessage, File(1, 8)) << "released without Commit";

    ASSERT_EQ(S_OK, Commit(msg.get()));
    const std::string header =
        "Return-Path: <a@example.com>\r\n"
        "Subject: [SPAM] Cheap\r\n"
        "X-Has-Been-Detected_Normal: 1\r\n"
        "X-Nuvexa-AntispamAddin-Checked: 1\r\n";
    EXPECT_EQ(header + "\r\nSubject: body text, not a header\r\n", File(1, 7));
    unique_bstr block;
    ASSERT_EQ(S_OK, Message(1, 7)->GetHeaderText(block.put()));
    EXPECT_EQ(std::wstring(header.begin(), header.end()), Text(block.get()));
    EXPECT_FALSE(root_.Exists(L"1\\7.eml.tmp"));
}

TEST_F(StoreStubHeaders, NonAsciiTextIsWrittenAsUtf8AndAnAnsiFileStillReads) {
    Put(1, 1, "Subject: caf\xE9\r\n\r\n");  // not UTF-8: the ANSI code page
    com_ptr<IQzMessage> msg = Message(1, 1);
    unique_bstr block;
    ASSERT_EQ(S_OK, msg->GetHeaderText(block.put()));
    EXPECT_EQ(L"Subject: caf\u00E9\r\n", Text(block.get()));
    ASSERT_EQ(S_OK, SetHeader(msg.get(), L"Subject", L"gr\u00FC\u00DF \u20AC"));
    ASSERT_EQ(S_OK, Commit(msg.get()));
    EXPECT_EQ("Subject: gr\xC3\xBC\xC3\x9F \xE2\x82\xAC\r\n\r\n", File(1, 1));
}

// Fields that would break the header block are refused; another body handle
// than the one handed out is a breach of the store's contract by the caller.
TEST_F(StoreStubHeaders, BadFieldsAreRefusedAndAnotherBodyHandleIsAContractBreach) {
    Put(1, 7, kMessage);
    com_ptr<IQzMessage> msg = Message(1, 7);
    EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L"X-A", L"1\r\nX-Injected: 1"));
    EXPECT_EQ(E_INVALIDARG, SetHeader(msg.get(), L" X-Leading-Blank", L"1"));
    EXPECT_EQ(0u, store().ContractViolations());
    ULONG handle = 0;
    EXPECT_EQ(E_INVALIDARG, msg->GetBodyHandle(1, 0, &handle));
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

TEST_F(StoreStubFiles, MoveTakesTheNextFreeIdOrFailsWithIdZeroAndMovesNothing) {
    Put(1, 7, kMessage);
    Put(2, 3, "A: 1\r\n\r\n");
    Put(2, 9, "A: 2\r\n\r\n");
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    ULONG new_id = 0;
    ASSERT_EQ(S_OK, mgr->MoveMessage(1, 2, 7, &new_id));
    EXPECT_EQ(10u, new_id);
    EXPECT_FALSE(Exists(1, 7));
    EXPECT_EQ(kMessage, File(2, 10));
    ASSERT_EQ(S_OK, mgr->MoveMessage(2, 1, 10, &new_id));
    EXPECT_EQ(1u, new_id) << "an empty folder starts at 1";

    const struct {
        ULONG src, dst, msg;
        HRESULT hr;
    } failures[] = {{1, 2, 8, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)},
                    {1, 1, 1, E_INVALIDARG},
                    {1, 5, 1, HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)}};
    for (const auto& f : failures) {
        new_id = 99;
        EXPECT_EQ(f.hr, mgr->MoveMessage(f.src, f.dst, f.msg, &new_id)) << f.dst;
        EXPECT_EQ(0u, new_id);
    }
    EXPECT_EQ(E_POINTER, mgr->MoveMessage(1, 2, 1, nullptr));
    EXPECT_EQ(kMessage, File(1, 1));
}

TEST_F(StoreStubFiles, BothDeletesRemoveTheFileAndALaterCommitDoesNotBringItBack) {
    Put(1, 1, kMessage);
    Put(1, 2, kMessage);
    com_ptr<IQzFolder> folder = Folder(CreateMgr().get(), 1);
    com_ptr<IQzMessage> first = Message(folder.get(), 1);
    ULONG result = 0;
    EXPECT_EQ(E_INVALIDARG, folder->DeleteMessage(2, 0, &result)) << "mode 1 only";
    ASSERT_EQ(S_OK, folder->DeleteMessage(2, 1, &result));
    EXPECT_FALSE(Exists(1, 2));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), folder->DeleteMessage(2, 1, &result));

    ASSERT_EQ(S_OK, SetHeader(first.get(), L"X-A", L"1"));
    ASSERT_EQ(S_OK, first->Delete(1));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), Commit(first.get()));
    EXPECT_FALSE(Exists(1, 1));
}

TEST_F(StoreStubFiles, EnumerationGoesByIdAndSurvivesDeletingTheCurrentMessage) {
    for (ULONG id : {12u, 3u, 7u})
        Put(1, id, "Id: " + std::to_string(id) + "\r\n\r\n");
    root_.WriteFile(L"1\\notes.txt", "not a message");
    root_.WriteFile(L"1\\007.eml", "leading zeros: not an id");
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
    EXPECT_EQ(S_OK, folder->GetFirstMessage(msg.put()));
    EXPECT_FALSE(msg) << "an empty folder ends at once";

    com_ptr<IQzFolder> missing;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), CreateMgr()->GetFolder(4, missing.put()));
    EXPECT_FALSE(missing);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), folder->GetMessage(2, msg.put()));
    EXPECT_FALSE(msg);
}

TEST_F(StoreStubFiles, MemoryModeBehavesAlikeAndTouchesNoFile) {
    ASSERT_EQ(S_OK, store().UseMemoryStore());
    Put(1, 7, kMessage);
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
    EXPECT_FALSE(Exists(1, 7));
    EXPECT_NE(std::string::npos,
              store().ReadMessage(2, 1).find("From: c@example.com\r\n\r\nSubject: body text"));
    EXPECT_FALSE(root_.Exists(L"1"));
}

using StoreStubJournal = StoreStubTest;

// The demo's report and the add-in's tests read the journal line by line.
TEST_F(StoreStubJournal, RecordsEveryCallInOrderWithItsArgumentsTargetAndResult) {
    Put(1, 7, kMessage);
    ASSERT_EQ(S_OK, store().CreateFolder(2));
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
    store().EnableJournal(false);
    CreateMgr();
    EXPECT_EQ(L"", store().Journal()) << "switched off for benchmarks";
}

TEST_F(StoreStubJournal, ReservedSlotsAnswerNotImplementedAndCountAsBreaches) {
    Put(1, 7, kMessage);
    com_ptr<IQzFolderMgr> mgr = CreateMgr();
    com_ptr<IQzFolder> folder = Folder(mgr.get(), 1);
    com_ptr<IQzMessage> msg = Message(folder.get(), 7);
    store().ClearJournal();
    EXPECT_EQ(E_NOTIMPL, mgr->Reserved14());
    EXPECT_EQ(E_NOTIMPL, folder->Reserved13());
    EXPECT_EQ(E_NOTIMPL, msg->Reserved52());
    EXPECT_EQ(3u, store().ContractViolations());
    EXPECT_EQ((std::vector<std::wstring>{L"IQzFolderMgr::Reserved14()", L"IQzFolder::Reserved13()",
                                         L"IQzMessage::Reserved52()"}),
              store().JournalLines());
    store().Reset();
    EXPECT_EQ(0u, store().ContractViolations());
}

}  // namespace
}  // namespace velk::tools::testing
