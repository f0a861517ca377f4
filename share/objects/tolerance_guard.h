// Scope objects that change a tolerance of the geometry library for one block of code.
//
//   const QFCorrectionForRESNOR correction(1e-6);   // until the end of the block
//
// The tolerance belongs to the process: other threads see the change, too. Guards may be nested like blocks.
#pragma once

#include "companions/geometry/constants.h"

// The base of all guards.
class QFCorrectionForGlobalData {
 public:
  int m_bRestore;  // nonzero: the destructor restores

 protected:
  explicit QFCorrectionForGlobalData(int restore = 1) : m_bRestore(restore) {}
  ~QFCorrectionForGlobalData() = default;
};

// Sets RESNOR to value; the destructor restores the old value unless restore is 0. A copy does not change RESNOR and
// restores the same value as its source.
class QFCorrectionForRESNOR : public QFCorrectionForGlobalData {
 public:
  explicit QFCorrectionForRESNOR(double value, int restore = 1)
      : QFCorrectionForGlobalData(restore), m_dSavedRESNOR(RESNOR) {
    RESNOR = value;
  }
  QFCorrectionForRESNOR(const QFCorrectionForRESNOR&) = default;
  QFCorrectionForRESNOR& operator=(const QFCorrectionForRESNOR&) = default;
  ~QFCorrectionForRESNOR() {
    if (m_bRestore) RESNOR = m_dSavedRESNOR;
  }

 private:
  double m_dSavedRESNOR;
};
