// QFConvertUnits: what stands between the system's internal unit and the scales of its neighbours.
//
// The system's lengths are in one scale throughout, so most of these functions give what they are given; only the
// outside machining strategy library works in a scale of a thousand to it. Each calling place has functions of its own,
// so that its scale can be changed alone. Nothing fails and any thread may call.
#pragma once

#include <atomic>

#include "companions/geometry/transforms.h"

// The calling places with a pair of functions, CALLER_ConvertToMM and CALLER_RetainToMMForVero.
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
  // Give their argument unchanged. Two are spelled so.
  static double ConvertToMM(const double& value) { return value; }
  static FRPosition ConvertToMM(const FRPosition& position) { return position; }
  static double ConverToMeters(const double& value) { return value; }
  static FRPosition ConverToMeters(const FRPosition& position) { return position; }
  static FRTransf ConvertTransfToMeters(const FRTransf& transform) { return transform; }

  // To the outside strategy library's scale and back, in place: times 1000 (for a position each coordinate), and
  // divided by 1000.
  static void RetainToMMForVero(double& value) { value *= kVeroScale; }
  static void RetainToMMForVero(FRPosition& position) {
    position = {position.x() * kVeroScale, position.y() * kVeroScale, position.z() * kVeroScale};
  }
  static void RetainToMetersForVero(double& value) { value /= kVeroScale; }

  // The same for one calling place each.
#define KV_UNIT_PAIR(caller)                                                             \
  static double caller##_ConvertToMM(const double& value) { return ConvertToMM(value); } \
  static void caller##_RetainToMMForVero(double& value) { RetainToMMForVero(value); }
  KV_UNIT_CALLERS(KV_UNIT_PAIR)
#undef KV_UNIT_PAIR
  static double KVNCManager_ConvertToMM(const double& value) { return ConvertToMM(value); }
  static double QFToolParam_ConvertToMM(const double& value) { return ConvertToMM(value); }
  static void QFToolParam_RetainToMM(double& value) { RetainToMMForVero(value); }

  // Two values of the whole process that callers share; nothing in this library depends on them. 0 and false to begin
  // with.
  static int GetConvertionStart() { return s_convertionStart; }
  static void SetConvertionStart(int start) { s_convertionStart = start; }
  static bool GetGeneratingToolpath() { return s_generatingToolpath; }
  static void SetGeneratingToolpath(bool generating) { s_generatingToolpath = generating; }

 private:
  static constexpr double kVeroScale = 1000.0;
  static inline std::atomic<int> s_convertionStart = 0;
  static inline std::atomic<bool> s_generatingToolpath = false;
};
