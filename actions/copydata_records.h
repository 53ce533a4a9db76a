// The request records the scanning process sends in WM_COPYDATA. Their
// layout is the scanning process's, byte for byte: little-endian integers,
// UTF-16LE text. Platform-free so the record code is also tested natively
// and fuzzed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velk::actions {

// COPYDATASTRUCT::dwData values.
constexpr std::uint32_t COPYDATA_CLONE_MSG = 1076;
constexpr std::uint32_t COPYDATA_MOVE_MSG = 1077;
constexpr std::uint32_t COPYDATA_DELETE_MSG = 1078;

constexpr std::size_t kHeaderUnits = 1024;        // szHeaders capacity, UTF-16 units
constexpr std::size_t kQueuedHeaderBytes = 1024;  // what a queued element keeps of it

struct CloneMsgRequest {
    std::uint32_t nOption;
    std::uint32_t nFolderID;
    std::uint32_t nMsgID;
    char16_t szHeaders[kHeaderUnits];
};

struct MoveMsgRequest {
    std::uint32_t nFlagQuarantineTime;
    std::uint32_t nOption;
    std::uint32_t nVerdict;
    std::uint32_t nSrcFolderID;
    std::uint32_t nDstFolderID;
    std::uint32_t nMsgID;
    char16_t szHeaders[kHeaderUnits];
};

struct DeleteMsgRequest {
    std::uint32_t nFolderID;
    std::uint32_t nMsgID;
    std::uint8_t bDeleteAllSpam;
    std::uint8_t reserved[3];
};

static_assert(sizeof(CloneMsgRequest) == 2060, "wire size of the clone record");
static_assert(offsetof(CloneMsgRequest, nFolderID) == 4);
static_assert(offsetof(CloneMsgRequest, nMsgID) == 8);
static_assert(offsetof(CloneMsgRequest, szHeaders) == 12);

static_assert(sizeof(MoveMsgRequest) == 2072, "wire size of the move record");
static_assert(offsetof(MoveMsgRequest, nOption) == 4);
static_assert(offsetof(MoveMsgRequest, nVerdict) == 8);
static_assert(offsetof(MoveMsgRequest, nSrcFolderID) == 12);
static_assert(offsetof(MoveMsgRequest, nDstFolderID) == 16);
static_assert(offsetof(MoveMsgRequest, nMsgID) == 20);
static_assert(offsetof(MoveMsgRequest, szHeaders) == 24);

static_assert(sizeof(DeleteMsgRequest) == 12, "wire size of the delete record");
static_assert(offsetof(DeleteMsgRequest, nMsgID) == 4);
static_assert(offsetof(DeleteMsgRequest, bDeleteAllSpam) == 8);

}  // namespace velk::actions
