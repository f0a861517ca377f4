// Automation arrays and values: bounds, types and what a value frees. Objects in arrays are in
// tests/utilities/automation_values_test.cpp.
#include "platform/automation.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(Automation, ArrayKeepsItsBounds) {
  SAFEARRAYBOUND bound = {3, -1};
  SAFEARRAY* const array = SafeArrayCreate(VT_I2, 1, &bound);
  ASSERT_NE(array, nullptr);
  LONG low = 0, high = 0;
  EXPECT_EQ(SafeArrayGetLBound(array, 1, &low), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &high), S_OK);
  EXPECT_EQ(std::pair(low, high), std::pair(LONG(-1), LONG(1)));
  for (const UINT dimension : {0, 2}) EXPECT_EQ(SafeArrayGetUBound(array, dimension, &high), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &low), E_INVALIDARG);
  for (LONG index : {-2, 2, INT_MIN, INT_MAX}) {
    std::int16_t number = 0;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &number), DISP_E_BADINDEX) << index;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &number), DISP_E_BADINDEX) << index;
  }
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_ARRAY | VT_I2;
  value.parray = array;
  EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(Automation, WrongTypesAndSizesAreRefused) {
  SAFEARRAYBOUND bound = {2, 0};
  for (const VARTYPE type : {WORD(VT_EMPTY), WORD(VT_NULL), WORD(VT_ARRAY | VT_R8), WORD(0xFFFF)})
    EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr) << type;
  VARIANT value;
  VariantInit(&value);
  value.vt = 12345;
  EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE);
  EXPECT_EQ(value.vt, 12345);
}

}  // namespace
