// CPoint and CRect: positions and rectangles in whole numbers, in pixels or in cells; the caller knows which. y grows
// downwards on a screen: top is smaller than bottom.
//
// The left and top edges belong to a rectangle, the right and bottom edges do not: CRect(0, 0, 3, 2) has the columns 0,
// 1, 2 and the rows 0, 1. Both are plain values without checks: a sum outside LONG is undefined, and edges in the wrong
// order make an empty rectangle. Any thread may use its own values.
//
// In an archive a point is the LONGs x, y and a rectangle is left, top, right, bottom; loading raises CArchiveException
// if the data ends too early.
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
  // True without area: right <= left or bottom <= top.
  bool IsRectEmpty() const { return right <= left || bottom <= top; }
  bool IsRectNull() const { return *this == CRect(); }
  bool PtInRect(const POINT& point) const {
    return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
  }

  void SetRect(LONG atLeft, LONG atTop, LONG atRight, LONG atBottom) { *this = {atLeft, atTop, atRight, atBottom}; }
  void SetRectEmpty() { *this = CRect(); }
  // Swaps left with right and top with bottom where they are in the wrong order.
  void NormalizeRect() {
    if (left > right) std::swap(left, right);
    if (top > bottom) std::swap(top, bottom);
  }
  void OffsetRect(LONG byX, LONG byY) { SetRect(left + byX, top + byY, right + byX, bottom + byY); }
  void InflateRect(LONG byX, LONG byY) { SetRect(left - byX, top - byY, right + byX, bottom + byY); }
  void DeflateRect(LONG byX, LONG byY) { InflateRect(-byX, -byY); }
  // Becomes the common part of both. Returns false and sets all edges to 0 if there is no common part.
  bool IntersectRect(const RECT& a, const RECT& b) {
    SetRect(std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom));
    if (IsRectEmpty()) SetRectEmpty();
    return !IsRectEmpty();
  }
  // Becomes the smallest rectangle around both; an empty one is ignored. Returns false and sets all edges to 0 if both
  // are empty.
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
