#include "share/machine/machine_types.h"

namespace {

template <class Value>
struct Row {
  Value value;
  std::string_view text;
  bool readable = true;
};

constexpr Row<VM_MACHINE_TYPE> kMachineTypes[] = {
    {VM_MACHINE_MILL, "Mill"},
    {VM_MACHINE_TURN, "Turn"},
    {VM_MACHINE_MILLTURN, "MillTurn"},
};

constexpr Row<MDTurretType> kTurretTypes[] = {
    {MD_TURRET, "Turret"},
    {MD_TURRET_HORIZ_HEAD, "Horiz Head"},
    {MD_TURRET_VERT_HEAD, "Vert Head"},
    {MD_TURRET_RAIL, "Rail"},
    {MD_TURRET_OTHER, "Other"},
    {MD_TURRET_A_HEAD, "TurretAHead", /*readable=*/false},
    {MD_TURRET_B_HEAD, "TurretBHead", /*readable=*/false},
    {MD_TURRET_HEAD, "Head"},
};

constexpr Row<CMDirType> kDirections[] = {
    {CM_DIR_PLUS_X, "+X"},  {CM_DIR_PLUS_Y, "+Y"},  {CM_DIR_PLUS_Z, "+Z"},
    {CM_DIR_MINUS_X, "-X"}, {CM_DIR_MINUS_Y, "-Y"}, {CM_DIR_MINUS_Z, "-Z"},
};

constexpr Row<CMParentType> kParentTypes[] = {
    {CM_PARENT_FIXED, "Fixed"},   {CM_PARENT_X, "X"},         {CM_PARENT_Y, "Y"},           {CM_PARENT_Z, "Z"},
    {CM_PARENT_A, "A"},           {CM_PARENT_B, "B"},         {CM_PARENT_C, "C"},           {CM_PARENT_REAR1, "Rear1"},
    {CM_PARENT_FRONT1, "Front1"}, {CM_PARENT_REAR2, "Rear2"}, {CM_PARENT_FRONT2, "Front2"}, {CM_PARENT_HEAD, "Head"},
};

constexpr Row<CM_AXIS_TYPE> kAxes[] = {
    {CM_AXIS_X, "X"}, {CM_AXIS_Y, "Y"}, {CM_AXIS_Z, "Z"}, {CM_AXIS_A, "A"}, {CM_AXIS_B, "B"}, {CM_AXIS_C, "C"},
};

template <class Value, std::size_t kRows>
std::string_view TextIn(const Row<Value> (&rows)[kRows], Value value) noexcept {
  for (const Row<Value>& row : rows) {
    if (row.value == value) return row.text;
  }
  return {};
}

template <class Value, std::size_t kRows>
bool ReadIn(const Row<Value> (&rows)[kRows], std::string_view text, Value& value, Value fallBack) noexcept {
  for (const Row<Value>& row : rows) {
    if (!row.readable || row.text != text) continue;
    value = row.value;
    return true;
  }
  value = fallBack;
  return false;
}

}  // namespace

std::string_view TextOf(VM_MACHINE_TYPE type) noexcept { return TextIn(kMachineTypes, type); }
std::string_view TextOf(MDTurretType type) noexcept { return TextIn(kTurretTypes, type); }
std::string_view TextOf(CMDirType direction) noexcept { return TextIn(kDirections, direction); }
std::string_view TextOf(CMParentType type) noexcept { return TextIn(kParentTypes, type); }
std::string_view TextOf(CM_AXIS_TYPE axis) noexcept { return TextIn(kAxes, axis); }

bool ReadText(std::string_view text, VM_MACHINE_TYPE& type) noexcept { return ReadIn(kMachineTypes, text, type, type); }
bool ReadText(std::string_view text, MDTurretType& type) noexcept {
  return ReadIn(kTurretTypes, text, type, MD_TURRET_NONE);
}
bool ReadText(std::string_view text, CMDirType& direction) noexcept {
  return ReadIn(kDirections, text, direction, CM_DIR_NONE);
}
bool ReadText(std::string_view text, CMParentType& type) noexcept {
  return ReadIn(kParentTypes, text, type, CM_PARENT_FIXED);
}
bool ReadText(std::string_view text, CM_AXIS_TYPE& axis) noexcept { return ReadIn(kAxes, text, axis, CM_AXIS_Z); }
