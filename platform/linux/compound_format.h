// The compound file format, version 3: the offsets in the header and in a directory entry, and the special sector
// numbers. All numbers are little-endian.
//
// A file consists of a header and sectors of 512 bytes (version 4: 4,096 bytes, with the header padded to one sector);
// sectors are numbered from 0 after the header. The allocation table (FAT) has each sector's successor, so a stream is
// a chain of sectors. The table's own sectors are listed in the header and, above 109, in a chain of index sectors
// (DIFAT). A stream below 4,096 bytes is a chain of 64-byte sectors inside one stream of the root and has its own table
// (mini FAT). The directory is a chain of 128-byte entries; the elements of a storage form a red-black search tree,
// ordered by length and upper-case name.
#pragma once

#include <cstring>

#include "platform/types.h"

namespace compound {

inline constexpr BYTE kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

// Header.
inline constexpr int kHeaderBytes = 512;
inline constexpr int kMinorVersionAt = 24;
inline constexpr int kMajorVersionAt = 26;
inline constexpr int kByteOrderAt = 28;
inline constexpr int kSectorShiftAt = 30;
inline constexpr int kMiniShiftAt = 32;
inline constexpr int kFatCountAt = 44;
inline constexpr int kDirectoryStartAt = 48;
inline constexpr int kMiniCutoffAt = 56;
inline constexpr int kMiniFatStartAt = 60;
inline constexpr int kMiniFatCountAt = 64;
inline constexpr int kDifatStartAt = 68;
inline constexpr int kDifatCountAt = 72;
inline constexpr int kDifatAt = 76;
inline constexpr DWORD kHeaderDifat = 109;

// Directory entry.
inline constexpr int kEntryBytes = 128;
inline constexpr int kNameBytesAt = 64;  // includes the terminator
inline constexpr int kTypeAt = 66;
inline constexpr int kColourAt = 67;
inline constexpr int kLeftAt = 68;
inline constexpr int kRightAt = 72;
inline constexpr int kChildAt = 76;
inline constexpr int kClassAt = 80;
inline constexpr int kStateBitsAt = 96;
inline constexpr int kCreatedAt = 100;
inline constexpr int kModifiedAt = 108;
inline constexpr int kStartAt = 116;
inline constexpr int kSizeAt = 120;

inline constexpr BYTE kTypeStorage = 1;
inline constexpr BYTE kTypeStream = 2;
inline constexpr BYTE kTypeRoot = 5;
inline constexpr BYTE kRed = 0;
inline constexpr BYTE kBlack = 1;

// Sector numbers.
inline constexpr DWORD kMaxSector = 0xFFFFFFFA;
inline constexpr DWORD kDifatSector = 0xFFFFFFFC;
inline constexpr DWORD kFatSector = 0xFFFFFFFD;
inline constexpr DWORD kEndOfChain = 0xFFFFFFFE;
inline constexpr DWORD kFree = 0xFFFFFFFF;
inline constexpr DWORD kNoEntry = 0xFFFFFFFF;

inline constexpr DWORD kMiniCutoff = 4096;
inline constexpr int kMiniShift = 6;
inline constexpr int kSectorShift = 9;
inline constexpr int kBigSectorShift = 12;
inline constexpr std::size_t kMaxNameUnits = 31;

// The limits of this implementation.
inline constexpr ULONGLONG kMaxFileBytes = 0x7FFFFFFF;
inline constexpr DWORD kMaxElements = 1 << 20;
inline constexpr int kMaxDepth = 256;

inline WORD Word(const BYTE* at) { return WORD(at[0] | at[1] << 8); }
inline DWORD Dword(const BYTE* at) { return DWORD(Word(at)) | DWORD(Word(at + 2)) << 16; }
inline void PutWord(BYTE* at, WORD value) {
  at[0] = BYTE(value);
  at[1] = BYTE(value >> 8);
}
inline void PutDword(BYTE* at, DWORD value) {
  PutWord(at, WORD(value));
  PutWord(at + 2, WORD(value >> 16));
}

}  // namespace compound
