// The enumerations of a machine definition, and their texts in the definition file and the export file.
//
// The numbers are fixed. A value without a text has the empty text. An unknown text is read as the fallback value named
// at the enumeration. Texts compare with case.
#pragma once

#include <string_view>

#include "platform/types.h"

// The kind of a machine. Its text is the name of its folder below the simulation path.
enum VM_MACHINE_TYPE : int { VM_MACHINE_MILL = 1, VM_MACHINE_TURN = 3, VM_MACHINE_MILLTURN = 4 };

// The kind of a channel's tool target. Fallback: MD_TURRET_NONE.
enum MDTurretType : int {
  MD_TURRET = 0,
  MD_TURRET_HORIZ_HEAD = 1,
  MD_TURRET_VERT_HEAD = 2,
  MD_TURRET_RAIL = 3,
  MD_TURRET_OTHER = 4,
  MD_TURRET_NONE = 5,    // no tool target; the default
  MD_TURRET_A_HEAD = 6,  // the export writes its text; the reader does not know it
  MD_TURRET_B_HEAD = 7,  // likewise
  MD_TURRET_HEAD = 8,
};

// A direction along a machine axis. Fallback: CM_DIR_NONE.
enum CMDirType : int {
  CM_DIR_PLUS_X = 0,
  CM_DIR_PLUS_Y = 1,
  CM_DIR_PLUS_Z = 2,
  CM_DIR_MINUS_X = 3,
  CM_DIR_MINUS_Y = 4,
  CM_DIR_MINUS_Z = 5,
  CM_DIR_NONE = 6,
};

// The axis or carrier that moves a shape. Fallback: CM_PARENT_FIXED.
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

// An axis of the shape table. Fallback: CM_AXIS_Z.
enum CM_AXIS_TYPE : int { CM_AXIS_X = 0, CM_AXIS_Y = 1, CM_AXIS_Z = 2, CM_AXIS_A = 3, CM_AXIS_B = 4, CM_AXIS_C = 5 };
inline constexpr int kMachineAxes = 6;

// The carrier of a list of shapes. CM_TARGET_TOOL always uses fixture index 0.
enum CM_TARGET_TYPE : int {
  CM_TARGET_TOOL = 0,
  CM_TARGET_FIXTURE = 1,
  CM_TARGET_SPARE = 2,  // in the table, but never filled by the reader
  CM_TARGET_NONE = 4,   // accepted and ignored
};

// Another way to name an axis: with CM_MOVE_ROTARY the directions X, Y, Z are the axes A, B, C; otherwise the direction
// is the axis.
enum CM_MOVE_TYPE : int { CM_MOVE_LINEAR = 1, CM_MOVE_ROTARY = 2 };
enum CM_SHAPE_DIR_TYPE : int { CM_SHAPE_DIR_X = 0, CM_SHAPE_DIR_Y = 1, CM_SHAPE_DIR_Z = 2 };

// The text of a value; empty for a value without text and for a number outside the enumeration. The texts are ASCII and
// static.
KVSHARE_API std::string_view TextOf(VM_MACHINE_TYPE type) noexcept;
KVSHARE_API std::string_view TextOf(MDTurretType type) noexcept;
KVSHARE_API std::string_view TextOf(CMDirType direction) noexcept;
KVSHARE_API std::string_view TextOf(CMParentType type) noexcept;
KVSHARE_API std::string_view TextOf(CM_AXIS_TYPE axis) noexcept;

// Sets the value of a text in a definition file and returns true. For an unknown text it sets the fallback and returns
// false; machine types have no fallback, so their value is unchanged.
KVSHARE_API bool ReadText(std::string_view text, VM_MACHINE_TYPE& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, MDTurretType& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CMDirType& direction) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CMParentType& type) noexcept;
KVSHARE_API bool ReadText(std::string_view text, CM_AXIS_TYPE& axis) noexcept;
