// CMemFile: one malloc block that grows by half.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "framework/file.h"

IMPLEMENT_DYNAMIC(CMemFile, CFile)

CMemFile::CMemFile(UINT growBytes) : m_nGrowBytes(std::max(growBytes, 1u)) {}

CMemFile::CMemFile(BYTE* block, ULONGLONG bytes, UINT growBytes) : m_nGrowBytes(0) {
  CMemFile::Attach(block, bytes, growBytes);
}

CMemFile::~CMemFile() { CMemFile::Close(); }

void CMemFile::Attach(BYTE* block, ULONGLONG bytes, UINT growBytes) {
  CMemFile::Close();
  m_pBlock = block;
  m_nCapacity = bytes;
  m_nGrowBytes = growBytes;
  m_bOwner = growBytes != 0;
  m_nLength = m_bOwner ? 0 : bytes;
}

BYTE* CMemFile::Detach() {
  BYTE* block = m_pBlock;
  m_pBlock = nullptr;
  m_nCapacity = m_nLength = m_nPosition = 0;
  return block;
}

void CMemFile::Close() {
  if (m_bOwner) std::free(m_pBlock);
  Detach();
}

// Makes the block large enough for `bytes` bytes in total.
void CMemFile::Grow(ULONGLONG bytes) {
  if (bytes <= m_nCapacity) return;
  const ULONGLONG half = m_nCapacity + m_nCapacity / 2;
  const ULONGLONG capacity = std::max({bytes, half, m_nCapacity + m_nGrowBytes});
  void* block = nullptr;
  if (m_nGrowBytes != 0 && capacity <= ULONGLONG(std::numeric_limits<std::ptrdiff_t>::max()))
    block = std::realloc(m_pBlock, std::size_t(capacity));
  if (!block) throw CFileException(CFileException::diskFull, -1, m_strFileName);
  m_pBlock = static_cast<BYTE*>(block);
  m_nCapacity = capacity;
}

UINT CMemFile::Read(void* target, UINT bytes) {
  if (m_nPosition >= m_nLength) return 0;
  const UINT part = UINT(std::min<ULONGLONG>(bytes, m_nLength - m_nPosition));
  std::memcpy(target, m_pBlock + m_nPosition, part);
  m_nPosition += part;
  return part;
}

void CMemFile::Write(const void* source, UINT bytes) {
  if (bytes == 0) return;
  const ULONGLONG behind = m_nPosition + bytes;
  if (behind < m_nPosition) throw CFileException(CFileException::diskFull, -1, m_strFileName);
  if (m_nPosition > m_nLength) SetLength(m_nPosition);  // zeros in the gap
  Grow(behind);
  m_nLength = std::max(m_nLength, behind);
  std::memcpy(m_pBlock + m_nPosition, source, bytes);
  m_nPosition = behind;
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from) {
  const ULONGLONG base = from == begin ? 0 : from == current ? m_nPosition : m_nLength;
  const ULONGLONG position = base + ULONGLONG(offset);  // wraps around for a negative offset
  if (offset < 0 ? position > base : position < base) {
    throw CFileException(CFileException::badSeek, -1, m_strFileName);
  }
  return m_nPosition = position;
}

void CMemFile::SetLength(ULONGLONG length) {
  Grow(length);
  if (length > m_nLength) std::memset(m_pBlock + m_nLength, 0, std::size_t(length - m_nLength));
  m_nLength = length;
  m_nPosition = std::min(m_nPosition, length);
}
