// QFSpindleStatus: the state of the two spindles of a lathe, for modules. This library only stores the values.
//
// In each call a spindle type other than QF_SPINDLE_SECOND means the first spindle. No call fails. Plain values without
// a lock.
#pragma once

#include "platform/types.h"

enum QF_ENUM_SPINDLE_TYPE : int {
  QF_SPINDLE_FIRST = 0,
  QF_SPINDLE_SECOND = 1,
};

// Modules define the values; this library stores the numbers.
enum QFeClampState : int {};
enum QFeSpindleState : int {};
enum LOCATING_METHOD : int {};
enum CHUCK_CLAMP_LOC_METHOD : int {};

class QFSpindleStatus {
 public:
  // The position of the spindle along its axis.
  double GetLocation(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).location; }
  void SetLocation(QF_ENUM_SPINDLE_TYPE type, double value) { Of(type).location = value; }
  // Of a new object 0 for the first spindle, 1 for the second; the same for GetState.
  QFeClampState GetClampState(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).clamp_state; }
  void SetClampState(QF_ENUM_SPINDLE_TYPE type, QFeClampState value) { Of(type).clamp_state = value; }
  QFeSpindleState GetState(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).state; }
  void SetState(QF_ENUM_SPINDLE_TYPE type, QFeSpindleState value) { Of(type).state = value; }
  // The angle of the spindle's C axis.
  double GetCAxisAngle(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).c_axis_angle; }
  void SetCAxisAngle(QF_ENUM_SPINDLE_TYPE type, double value) { Of(type).c_axis_angle = value; }
  // The radius at which the part is located.
  double GetLocatingRadius(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).locating_radius; }
  void SetLocatingRadius(QF_ENUM_SPINDLE_TYPE type, double value) { Of(type).locating_radius = value; }
  // The steps that locate in Z and on the diameter.
  int GetZLocatingStep(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).z_locating_step; }
  void SetZLocatingStep(QF_ENUM_SPINDLE_TYPE type, int value) { Of(type).z_locating_step = value; }
  int GetDiaLocatingStep(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).diameter_locating_step; }
  void SetDiaLocatingStep(QF_ENUM_SPINDLE_TYPE type, int value) { Of(type).diameter_locating_step = value; }
  // How the part is located, and how a step of the chuck locates it; of a new object 0 and 1.
  LOCATING_METHOD GetLocatingMethod(QF_ENUM_SPINDLE_TYPE type) const { return Of(type).locating_method; }
  void SetLocatingMethod(QF_ENUM_SPINDLE_TYPE type, LOCATING_METHOD value) { Of(type).locating_method = value; }
  CHUCK_CLAMP_LOC_METHOD GetStepLocatingMethod(QF_ENUM_SPINDLE_TYPE type) const {
    return Of(type).step_locating_method;
  }
  void SetStepLocatingMethod(QF_ENUM_SPINDLE_TYPE type, CHUCK_CLAMP_LOC_METHOD value) {
    Of(type).step_locating_method = value;
  }

  // How far the part was moved. MovePart adds a distance; it does not change the locations of the spindles.
  double GetPartMoveDistance() const { return m_PartMoveDistance; }
  void SetPartMoveDistance(double distance) { m_PartMoveDistance = distance; }
  void MovePart(double distance) { m_PartMoveDistance += distance; }
  int GetIsReverseSetup() const { return m_bReverseSetup; }
  void SetIsReverseSetup(int flag) { m_bReverseSetup = flag; }

 private:
  struct Spindle {
    double location = 0;
    QFeClampState clamp_state = {};
    QFeSpindleState state = {};
    double c_axis_angle = 0;
    double locating_radius = 0;
    int z_locating_step = 0;
    int diameter_locating_step = 0;
    LOCATING_METHOD locating_method = {};
    CHUCK_CLAMP_LOC_METHOD step_locating_method = CHUCK_CLAMP_LOC_METHOD(1);
  };

  const Spindle& Of(QF_ENUM_SPINDLE_TYPE type) const { return type == QF_SPINDLE_SECOND ? m_Second : m_First; }
  Spindle& Of(QF_ENUM_SPINDLE_TYPE type) { return type == QF_SPINDLE_SECOND ? m_Second : m_First; }

  Spindle m_First;
  Spindle m_Second = {.clamp_state = QFeClampState(1), .state = QFeSpindleState(1)};
  double m_PartMoveDistance = 0;
  int m_bReverseSetup = 0;
};
