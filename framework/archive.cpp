// CArchive: the buffer, bytes, texts and counts. References and classes are in framework/archive_objects.cpp.
//
// The byte layout. All numbers are little-endian; there is no header, padding, checksum or terminator.
//
//   number            its 1, 2, 4 or 8 bytes; bool is one byte
//   text              length record, then the units without a terminator; stored as UTF-16LE
//   length record     FF FE FF first if the text is wide; then n in units, or in bytes if it is narrow
//                       n < 0xFF               BYTE n
//                       n < 0xFFFE             FF, WORD n          (WORD 0xFFFE is the mark of wide text)
//                       n < 0xFFFFFFFF         FF FF FF, DWORD n
//                       else                   FF seven times, QWORD n
//   count             n < 0xFFFF WORD n, else FF FF, DWORD n; from 0xFFFFFFFF on FF six times, QWORD n
//   reference         00 00                                        null
//                     WORD n, n from 1 to 0x7FFE                   the object with this number
//                     class record, then the object's own bytes    a new object
//   class record      FF FF, WORD schema, WORD length, name in single bytes     a new class
//                     WORD 0x8000 | n                                           the class with this number
//   larger numbers    FF 7F, then DWORD n, for a class DWORD 0x80000000 | n, instead of the WORD
//
// Classes and objects share one running number from 1. A class gets its number before its first object, and an object
// gets its number before its bytes are stored, so references inside it may form a cycle. An archive has at most
// 0x3FFFFFFE numbers. Only the low 16 bits of a schema are stored, so without VERSIONABLE_SCHEMA.
#include "framework/archive.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "framework/block_pool.h"
#include "framework/internal/loaded_objects.h"
#include "framework/internal/stored_numbers.h"
#include "platform/text.h"

static_assert(std::endian::native == std::endian::little, "values are copied as they are in memory");

namespace {

constexpr std::size_t kSmallestBuffer = 128;
constexpr UINT kLargestTransfer = 1u << 30;  // bytes per CFile call
constexpr ULONGLONG kLongestText = 0x3FFFFFFF;
constexpr UINT kNarrowCodePage = 1252;  // narrow texts do not store their code page

std::size_t ReadFully(CFile& file, void* target, std::size_t bytes) {
  std::size_t done = 0;
  while (done < bytes) {
    const UINT part = UINT(std::min<std::size_t>(bytes - done, kLargestTransfer));
    const UINT got = file.Read(static_cast<BYTE*>(target) + done, part);
    if (got == 0) break;
    done += std::min(got, part);
  }
  return done;
}

void WriteFully(CFile& file, const void* source, std::size_t bytes) {
  for (std::size_t done = 0; done < bytes;) {
    const UINT part = UINT(std::min<std::size_t>(bytes - done, kLargestTransfer));
    file.Write(static_cast<const BYTE*>(source) + done, part);
    done += part;
  }
}

}  // namespace

CArchive::CArchive(CFile* file, UINT mode, int bufferBytes, void* buffer)
    : m_strFileName(file->GetFilePath()),
      m_nBufferBytes(std::max(std::size_t(std::max(bufferBytes, 0)), kSmallestBuffer)),
      m_bOwnBuffer(!buffer),
      m_pFile(file),
      m_bLoading((mode & load) != 0),
      m_bFlushOnDelete((mode & bNoFlushOnDelete) == 0) {
  m_pBuffer = static_cast<BYTE*>(buffer ? buffer : BlockPool::Allocate(m_nBufferBytes));
  if (m_bLoading) {
    m_pIn = m_pInEnd = m_pBuffer;
  } else {
    m_pOut = m_pBuffer;
    m_pOutEnd = m_pBuffer + m_nBufferBytes;
  }
}

CArchive::~CArchive() {
  if (m_bFlushOnDelete) {
    try {
      Close();
    } catch (...) {
      // A destructor cannot report a failure: callers that need it call Close. Abort below frees what Close left.
    }
  }
  Abort();
  if (m_bOwnBuffer) BlockPool::Free(m_pBuffer, m_nBufferBytes);
}

void CArchive::Fail(int cause) const { throw CArchiveException(cause, m_strFileName); }

void CArchive::CheckStoring() const {
  if (m_bLoading) Fail(CArchiveException::readOnly);
  if (!m_pFile) Fail(CArchiveException::genericException);
}

void CArchive::FailLoading() const {
  Fail(m_bLoading ? CArchiveException::genericException : CArchiveException::writeOnly);
}

// ---- buffer

void CArchive::Flush() {
  if (!m_pFile) return;
  if (m_bLoading) {
    if (m_pIn != m_pInEnd) m_pFile->Seek(m_pIn - m_pInEnd, CFile::current);
    m_pIn = m_pInEnd = m_pBuffer;
  } else {
    const std::size_t bytes = std::size_t(m_pOut - m_pBuffer);
    m_nFlushed += bytes;
    m_pOut = m_pBuffer;  // before the write, so that the destructor does not write again after a failure
    WriteFully(*m_pFile, m_pBuffer, bytes);
  }
}

void CArchive::Close() {
  if (!m_pFile) return;
  Flush();
  Abort();
}

void CArchive::Abort() noexcept {
  m_pFile = nullptr;
  m_pIn = m_pInEnd = m_pOut = m_pOutEnd = nullptr;
  m_stored.reset();
  if (m_pLoaded) m_pLoaded->Close();
  m_pLoaded = nullptr;
}

// An empty buffer has room for any value: the smallest buffer is larger than the largest value.
void CArchive::MakeRoom() {
  CheckStoring();
  Flush();
}

void CArchive::FillBuffer(std::size_t bytesNeeded) {
  CheckLoading();
  const std::size_t left = std::size_t(m_pInEnd - m_pIn);
  if (left >= bytesNeeded) return;
  if (bytesNeeded > m_nBufferBytes) Fail(CArchiveException::genericException);
  std::memmove(m_pBuffer, m_pIn, left);
  m_pIn = m_pBuffer;
  m_pInEnd = m_pBuffer + left;
  m_pInEnd += ReadFully(*m_pFile, m_pInEnd, m_nBufferBytes - left);
  if (std::size_t(m_pInEnd - m_pIn) < bytesNeeded) Fail(CArchiveException::endOfFile);
}

ULONGLONG CArchive::GetBytesLeft() const {
  CheckLoading();
  const ULONGLONG length = m_pFile->GetLength();
  const ULONGLONG position = m_pFile->GetPosition();
  return (length > position ? length - position : 0) + ULONGLONG(m_pInEnd - m_pIn);
}

void CArchive::EnsureLeft(ULONGLONG count, ULONGLONG elementBytes) {
  if (elementBytes == 0) return;
  if (count <= ULONGLONG(m_pInEnd - m_pIn) / elementBytes) return;  // the usual case needs no call to the file
  if (count > GetBytesLeft() / elementBytes) Fail(CArchiveException::endOfFile);
}

// ---- bytes

std::size_t CArchive::Read(void* target, std::size_t bytes) {
  auto* to = static_cast<BYTE*>(target);
  const std::size_t buffered = std::min(bytes, std::size_t(m_pInEnd - m_pIn));
  if (buffered != 0) {
    std::memcpy(to, m_pIn, buffered);
    m_pIn += buffered;
  }
  const std::size_t rest = bytes - buffered;
  if (rest == 0) return bytes;
  CheckLoading();
  if (rest >= m_nBufferBytes) return buffered + ReadFully(*m_pFile, to + buffered, rest);  // bypasses the buffer
  m_pIn = m_pBuffer;
  m_pInEnd = m_pBuffer + ReadFully(*m_pFile, m_pBuffer, m_nBufferBytes);
  const std::size_t got = std::min(rest, std::size_t(m_pInEnd - m_pIn));
  std::memcpy(to + buffered, m_pIn, got);
  m_pIn += got;
  return buffered + got;
}

void CArchive::EnsureRead(void* target, std::size_t bytes) {
  if (Read(target, bytes) != bytes) Fail(CArchiveException::endOfFile);
}

void CArchive::Write(const void* source, std::size_t bytes) {
  if (bytes == 0) return;
  if (std::size_t(m_pOutEnd - m_pOut) < bytes) {
    MakeRoom();
    if (bytes >= m_nBufferBytes) {
      m_nFlushed += bytes;
      return WriteFully(*m_pFile, source, bytes);
    }
  }
  std::memcpy(m_pOut, source, bytes);
  m_pOut += bytes;
}

// ---- texts and counts

void AfxWriteStringLength(CArchive& ar, std::size_t length, BOOL wide) {
  if (wide) ar << BYTE(0xFF) << WORD(0xFFFE);
  if (length < 0xFF) {
    ar << BYTE(length);
  } else if (length < 0xFFFE) {
    ar << BYTE(0xFF) << WORD(length);
  } else if (length < 0xFFFFFFFF) {
    ar << BYTE(0xFF) << WORD(0xFFFF) << DWORD(length);
  } else {
    ar << BYTE(0xFF) << WORD(0xFFFF) << DWORD(0xFFFFFFFF) << ULONGLONG(length);
  }
}

namespace {

// Reads a length after a first byte FF. At the mark of wide text it sets `wide` and starts again.
ULONGLONG ReadLongLength(CArchive& ar, bool& wide) {
  WORD word = 0;
  ar >> word;
  if (word == 0xFFFE && !wide) {
    wide = true;
    BYTE length = 0;
    ar >> length;
    return length < 0xFF ? length : ReadLongLength(ar, wide);
  }
  // After the mark, 0xFFFE is never written as a length, so the data is damaged.
  if (word == 0xFFFE) AfxThrowArchiveException(CArchiveException::endOfFile, ar.m_strFileName);
  if (word < 0xFFFE) return word;
  DWORD dword = 0;
  ar >> dword;
  if (dword < 0xFFFFFFFF) return dword;
  ULONGLONG qword = 0;
  ar >> qword;
  return qword;
}

}  // namespace

std::size_t AfxReadStringLength(CArchive& ar, int& charBytes) {
  BYTE first = 0;
  bool wide = false;
  ar >> first;
  const ULONGLONG length = first < 0xFF ? first : ReadLongLength(ar, wide);
  charBytes = wide ? 2 : 1;
  ar.EnsureLeft(length, ULONGLONG(charBytes));
  return std::size_t(length);
}

CArchive& CArchive::operator<<(const CString& text) {
  const std::size_t length = std::size_t(text.GetLength());
  const std::size_t bytes = length * sizeof(TCHAR);
  if (length < 0xFF && std::size_t(m_pOutEnd - m_pOut) >= bytes + 4) {  // most texts
    const BYTE head[4] = {0xFF, 0xFE, 0xFF, BYTE(length)};
    std::memcpy(m_pOut, head, sizeof head);
    std::memcpy(m_pOut + sizeof head, text.GetString(), bytes);
    m_pOut += sizeof head + bytes;
    return *this;
  }
  AfxWriteStringLength(*this, length, /*wide=*/TRUE);
  Write(text.GetString(), bytes);
  return *this;
}

CArchive& CArchive::operator>>(CString& text) {
  static constexpr BYTE kWideMark[] = {0xFF, 0xFE, 0xFF};
  const std::size_t buffered = std::size_t(m_pInEnd - m_pIn);
  if (buffered > 4 && m_pIn[3] != 0xFF && m_pIn[3] != 0 && std::memcmp(m_pIn, kWideMark, sizeof kWideMark) == 0 &&
      buffered >= 4 + m_pIn[3] * sizeof(TCHAR)) {  // most texts
    const BYTE units = m_pIn[3];
    text.AssignUnits(m_pIn + 4, units);
    m_pIn += 4 + units * sizeof(TCHAR);
    return *this;
  }
  int charBytes = 0;
  const std::size_t length = AfxReadStringLength(*this, charBytes);
  if (length == 0) {
    text.Empty();
    return *this;
  }
  if (length > kLongestText) Fail(CArchiveException::endOfFile);
  if (charBytes == 2) {
    EnsureRead(text.GetBufferSetLength(int(length)), length * sizeof(TCHAR));
    return *this;
  }
  TCHAR* const units = text.GetBufferSetLength(int(length));  // the code page maps each byte to one unit
  char piece[256];
  for (std::size_t done = 0; done < length;) {
    const auto bytes = int(std::min(length - done, sizeof piece));
    EnsureRead(piece, std::size_t(bytes));
    MultiByteToWideChar(kNarrowCodePage, 0, piece, bytes, units + done, bytes);
    done += std::size_t(bytes);
  }
  return *this;
}

bool CArchive::ReadIfEqual(const CString& text) {
  const std::size_t length = std::size_t(text.GetLength());
  const std::size_t bytes = length * sizeof(TCHAR);
  if (length >= 0xFF || std::size_t(m_pInEnd - m_pIn) < bytes + 4) return false;
  const BYTE head[4] = {0xFF, 0xFE, 0xFF, BYTE(length)};
  if (std::memcmp(m_pIn, head, sizeof head) != 0) return false;
  if (std::memcmp(m_pIn + sizeof head, text.GetString(), bytes) != 0) return false;
  m_pIn += sizeof head + bytes;
  return true;
}

std::size_t CArchive::StoredBytes(const CString& text, BYTE* bytes, std::size_t room) {
  const std::size_t length = std::size_t(text.GetLength());
  const BYTE head[4] = {0xFF, 0xFE, 0xFF, BYTE(length)};
  const std::size_t stored = sizeof head + length * sizeof(TCHAR);
  if (length >= 0xFF || stored > room) return 0;
  std::memcpy(bytes, head, sizeof head);
  std::memcpy(bytes + sizeof head, text.GetString(), length * sizeof(TCHAR));
  return stored;
}

void CArchive::WriteCount(ULONGLONG count) {
  if (count < 0xFFFF) {
    *this << WORD(count);
  } else if (count < 0xFFFFFFFF) {
    *this << WORD(0xFFFF) << DWORD(count);
  } else {
    *this << WORD(0xFFFF) << DWORD(0xFFFFFFFF) << count;
  }
}

ULONGLONG CArchive::ReadCount(ULONGLONG elementBytes) {
  WORD word = 0;
  *this >> word;
  ULONGLONG count = word;
  if (word == 0xFFFF) {
    DWORD dword = 0;
    *this >> dword;
    count = dword;
    if (dword == 0xFFFFFFFF) *this >> count;
  }
  EnsureLeft(count, elementBytes);
  return count;
}
