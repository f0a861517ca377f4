// QFConvertUnits, conversions between the system's internal unit and the units of other libraries.
//
// The system uses one length unit, so most functions return their argument unchanged. Only the outside machining
// strategy library uses a unit 1000 times smaller. Each caller has its own functions, so that its unit can be changed
// separately. Nothing fails, and any thread may call.
#pragma once

#include <atomic>

#include "companions/geometry/transforms.h"

// The callers with a pair of functions, CALLER_ConvertToMM and CALLER_RetainToMMForVero.
#define KV_UNIT_CALLERS(CALLER) \
  CALLER(KVThreadToolpath)      \
  CALLER(QFFaceMill)            \
  CALLER(QFFaceTpFeature)       \
  CALLER(QFFinishTpFeature)     \
  CALLER(QFFinishing)           \
  CALLER(QFLeadin)              \
  CALLER(QFLeadout)             \
  CALLER(QFNC)                  \
  CALLER(QFRoughTpFeature)      \
  CALLER(QFRoughing)            \
  CALLER(QFSetup)               \
  CALLER(QFThreadMill)          \
  CALLER(QFTpBaseFeature)       \
  CALLER(QFTpMillFeature)

class KVSHARE_API QFConvertUnits {
 public:
  // Return their argument unchanged. Two names are misspelled: kept for existing modules.
  static double ConvertToMM(const double& value) { return value; }
  static FRPosition ConvertToMM(const FRPosition& position) { return position; }
  static double ConverToMeters(const double& value) { return value; }
  static FRPosition ConverToMeters(const FRPosition& position) { return position; }
  static FRTransf ConvertTransfToMeters(const FRTransf& transform) { return transform; }

  // Convert in place to the strategy library's unit (times 1000, for a position each coordinate) and back (divided by
  // 1000).
  static void RetainToMMForVero(double& value) { value *= kVeroScale; }
  static void RetainToMMForVero(FRPosition& position) {
    position = {position.x() * kVeroScale, position.y() * kVeroScale, position.z() * kVeroScale};
  }
  static void RetainToMetersForVero(double& value) { value /= kVeroScale; }

  // The same for one caller each.
#define KV_UNIT_PAIR(caller)                                                             \
  static double caller##_ConvertToMM(const double& value) { return ConvertToMM(value); } \
  static void caller##_RetainToMMForVero(double& value) { RetainToMMForVero(value); }
  KV_UNIT_CALLERS(KV_UNIT_PAIR)
#undef KV_UNIT_PAIR
  static double KVNCManager_ConvertToMM(const double& value) { return ConvertToMM(value); }
  static double QFToolParam_ConvertToMM(const double& value) { return ConvertToMM(value); }
  static void QFToolParam_RetainToMM(double& value) { RetainToMMForVero(value); }

  // Two values of the process that modules share, at first 0 and false. This library does not use them.
  static int GetConvertionStart() { return s_convertionStart; }
  static void SetConvertionStart(int start) { s_convertionStart = start; }
  static bool GetGeneratingToolpath() { return s_generatingToolpath; }
  static void SetGeneratingToolpath(bool generating) { s_generatingToolpath = generating; }

 private:
  static constexpr double kVeroScale = 1000.0;
  static inline std::atomic<int> s_convertionStart = 0;
  static inline std::atomic<bool> s_generatingToolpath = false;
};
