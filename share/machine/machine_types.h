// The enumerations of a machine definition, and the texts by which the definition file and the export file name them.
//
// The values are fixed. A value without a text has an empty one; a text that is not known reads as the fall-back that
// stands beside the enumeration. Texts compare exactly, with case.
#pragma once

#include <string_view>

#include "platform/types.h"

// Kind of machine, and the name of the folder below the simulation path.
enum VM_MACHINE_TYPE : int { VM_MACHINE_MILL = 1, VM_MACHINE_TURN = 3, VM_MACHINE_MILLTURN = 4 };

// Kind of a channel's tool target. An unknown text reads as MD_TURRET_NONE.
enum MDTurretType : int {
  MD_TURRET = 0,
  MD_TURRET_HORIZ_HEAD = 1,
  MD_TURRET_VERT_HEAD = 2,
  MD_TURRET_RAIL = 3,
  MD_TURRET_OTHER = 4,
  MD_TURRET_NONE = 5,    // a channel without tool target, which is the default
  MD_TURRET_A_HEAD = 6,  // written by the export; the reader takes its text for an unknown one
  MD_TURRET_B_HEAD = 7,  // likewise
  MD_TURRET_HEAD = 8,
};

// A direction along a machine axis. An unknown text reads as CM_DIR_NONE.
enum CMDirType : int {
  CM_DIR_PLUS_X = 0,
  CM_DIR_PLUS_Y = 1,
  CM_DIR_PLUS_Z = 2,
  CM_DIR_MINUS_X = 3,
  CM_DIR_MINUS_Y = 4,
  CM_DIR_MINUS_Z = 5,
  CM_DIR_NONE = 6,
};

// What a shape hangs on. An unknown text reads as CM_PARENT_FIXED.
enum CMParentType : int {
  CM_PARENT_FIXED = 0,
  CM_PARENT_X = 1,
  CM_PARENT_Y = 2,
  CM_PARENT_Z = 3,
  CM_PARENT_A = 4,
  CM_PARENT_B = 5,
  CM_PARENT_C = 6,
  CM_PARENT_REAR1 = 7,
  CM_PARENT_FRONT1 = 8,
  CM_PARENT_REAR2 = 9,
  CM_PARENT_FRONT2 = 10,
  CM_PARENT_HEAD = 11,
};

// An axis of the shape table. An unknown text reads as CM_AXIS_Z.
enum CM_AXIS_TYPE : int { CM_AXIS_X = 0, CM_AXIS_Y = 1, CM_AXIS_Z = 2, CM_AXIS_A = 3, CM_AXIS_B = 4, CM_AXIS_C = 5 };
inline constexpr int kMachineAxes = 6;

// What carries a list of shapes. The tool uses fixture index 0.
enum CM_TARGET_TYPE : int {
  CM_TARGET_TOOL = 0,
  CM_TARGET_FIXTURE = 1,
  CM_TARGET_SPARE = 2,  // a row that the table holds and nothing fills
  CM_TARGET_NONE = 4,   // accepted and dropped
};

// The second way of naming an axis: with a rotary move the directions 0, 1, 2 are the axes A, B, C; with a linear one
// the direction is the axis index itself.
enum CM_MOVE_TYPE : int { CM_MOVE_LINEAR = 1, CM_MOVE_ROTARY = 2 };
enum CM_SHAPE_DIR_TYPE : int { CM_SHAPE_DIR_X = 0, CM_SHAPE_DIR_Y = 1, CM_SHAPE_DIR_Z = 2 };

// The text of a value, empty for one without text and for a number that is none of the enumeration's. The texts are
// ASCII and live for ever.
KVSHARE_API std::string_view TextOf(VM_MACHINE_TYPE type) noexcept;
KVSHARE_API std::string_view TextOf(MDTurretType type) noexcept;
KVSHARE_API std::string_view TextOf(CMDirType direction) noexcept;
KVSHARE_API std::string_view TextOf(CMParentType type) noexcept;
KVSHARE_API std::string_view TextOf(CM_AXIS_TYPE axis) noexcept;

// The value of a text as a definition file writes it: true if it is known, otherwise false and the fall-back.
// Machine types have no fall-back: an unknown text leaves the value alone.
KVSHARE_API bool ReadText(std::string_view text, VM_MACHINE_TYPE& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, MDTurretType& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CMDirType& direction) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CMParentType& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CM_AXIS_TYPE& axis) noexcept;
