// CPoint and CRect, whole numbers of pixels or cells. Plain values; a rectangle contains its left and top edge and not
// its right and bottom one. In an archive a point is the LONGs x, y, a rectangle left, top, right, bottom.
#pragma once

#include <algorithm>

#include "framework/archive.h"
#include "platform/types.h"

class CPoint : public POINT {
 public:
  CPoint() : POINT{0, 0} {}
  CPoint(LONG atX, LONG atY) : POINT{atX, atY} {}
  CPoint(const POINT& point) : POINT(point) {}

  void Offset(LONG byX, LONG byY) {
    x += byX;
    y += byY;
  }
  CPoint operator+(const POINT& other) const { return {x + other.x, y + other.y}; }
  CPoint operator-(const POINT& other) const { return {x - other.x, y - other.y}; }
  CPoint operator-() const { return {-x, -y}; }
  CPoint& operator+=(const POINT& other) { return *this = *this + other; }
  CPoint& operator-=(const POINT& other) { return *this = *this - other; }
  bool operator==(const CPoint& other) const { return x == other.x && y == other.y; }
};

class CRect : public RECT {
 public:
  CRect() : RECT{0, 0, 0, 0} {}
  CRect(LONG atLeft, LONG atTop, LONG atRight, LONG atBottom) : RECT{atLeft, atTop, atRight, atBottom} {}
  CRect(const RECT& rect) : RECT(rect) {}
  CRect(const POINT& topLeft, const POINT& bottomRight) : RECT{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y} {}

  LONG Width() const { return right - left; }
  LONG Height() const { return bottom - top; }
  CPoint TopLeft() const { return {left, top}; }
  CPoint BottomRight() const { return {right, bottom}; }
  CPoint CenterPoint() const { return {left + Width() / 2, top + Height() / 2}; }
  // No area: right not above left, or bottom not above top.
  bool IsRectEmpty() const { return right <= left || bottom <= top; }
  bool IsRectNull() const { return *this == CRect(); }
  bool PtInRect(const POINT& point) const {
    return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
  }

  void SetRect(LONG atLeft, LONG atTop, LONG atRight, LONG atBottom) { *this = {atLeft, atTop, atRight, atBottom}; }
  void SetRectEmpty() { *this = CRect(); }
  // Swaps edges that stand the wrong way round.
  void NormalizeRect() {
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
  }
  void OffsetRect(LONG byX, LONG byY) { SetRect(left + byX, top + byY, right + byX, bottom + byY); }
  void InflateRect(LONG byX, LONG byY) { SetRect(left - byX, top - byY, right + byX, bottom + byY); }
  void DeflateRect(LONG byX, LONG byY) { InflateRect(-byX, -byY); }
  // The common part; false, with all edges 0, if there is none.
  bool IntersectRect(const RECT& a, const RECT& b) {
    SetRect(std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom));
    if (IsRectEmpty()) SetRectEmpty();
    return !IsRectEmpty();
  }
  // The smallest rectangle around both; an empty one doesn't count. False if both are empty.
  bool UnionRect(const RECT& a, const RECT& b) {
    const CRect first(a), second(b);
    if (first.IsRectEmpty() || second.IsRectEmpty()) {
      *this = first.IsRectEmpty() ? second : first;
      if (IsRectEmpty()) SetRectEmpty();
    } else {
      SetRect(std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
              std::max(a.bottom, b.bottom));
    }
    return !IsRectEmpty();
  }
  bool operator==(const CRect& other) const {
    return left == other.left && top == other.top && right == other.right && bottom == other.bottom;
  }
};

inline CArchive& operator<<(CArchive& ar, const POINT& point) { return ar << point.x << point.y; }
inline CArchive& operator>>(CArchive& ar, POINT& point) { return ar >> point.x >> point.y; }
inline CArchive& operator<<(CArchive& ar, const RECT& rect) {
  return ar << rect.left << rect.top << rect.right << rect.bottom;
}
inline CArchive& operator>>(CArchive& ar, RECT& rect) {
  return ar >> rect.left >> rect.top >> rect.right >> rect.bottom;
}
