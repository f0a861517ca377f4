// Conversions of valid and wrong automation values, and their references.
#include "share/utilities/automation_values.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/values.h"

namespace {

SAFEARRAY* Array(VARTYPE type, ULONG count, LONG lower) {
  SAFEARRAYBOUND bound = {count, lower};
  return SafeArrayCreate(type, 1, &bound);
}

// A value with a destructor.
struct Value : VARIANT {
  Value() { VariantInit(this); }
  Value(VARTYPE type, SAFEARRAY* array) : Value() {
    vt = type;
    parray = array;
  }
  ~Value() { EXPECT_EQ(VariantClear(this), S_OK); }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
};

TEST(AutomationValues, DoublesComeOutFromTheirLowerBoundOn) {
  for (const LONG lower : {-7, INT_MAX - 2}) {
    Value value(VT_ARRAY | VT_R8, Array(VT_R8, 3, lower));
    for (int i = 0; i < 3; ++i) {
      LONG index = lower + i;
      double number = i + 0.5;
      EXPECT_EQ(SafeArrayPutElement(value.parray, &index, &number), S_OK);
    }
    double out[4] = {9, 9, 9, 9};
    EXPECT_EQ(GetNumberOfElementsFromSafearrayDoubleVal(value), 3);
    EXPECT_EQ(UnpackFromSafearrayDoubleVal(value, out), 3);
    EXPECT_EQ(std::vector(out, out + 4), std::vector({0.5, 1.5, 2.5, 9.}));
    EXPECT_EQ(UnpackFromSafearrayDoubleVal(value, nullptr), -1);
  }
  const Value none(VT_ARRAY | VT_R8, Array(VT_R8, 0, 5));
  EXPECT_EQ(GetNumberOfElementsFromSafearrayDoubleVal(none), 0);
}

TEST(AutomationValues, WrongValuesAreRefused) {
  SAFEARRAY* const flat = Array(VT_R8, 2, 0);
  flat->cDims = 2;  // as if it had a second dimension
  const Value rows[] = {{VT_EMPTY, nullptr},
                        {VT_R8, nullptr},
                        {VT_ARRAY | VT_R8, nullptr},
                        {VT_ARRAY | VT_R8, Array(VT_I4, 2, 0)},
                        {VT_ARRAY | VT_DISPATCH, Array(VT_R8, 2, 0)},
                        {VT_ARRAY | VT_R8, flat}};
  for (const Value& value : rows) {
    SCOPED_TRACE(value.vt);
    double out[2] = {9, 9};
    CList<IDispatch*> list;
    EXPECT_EQ(GetNumberOfElementsFromSafearrayDoubleVal(value), -1);
    EXPECT_EQ(UnpackFromSafearrayDoubleVal(value, out), -1);
    EXPECT_EQ(UnpackIDispPointersFromSafearray(value, list), -1);
    EXPECT_EQ(out[0], 9);
    EXPECT_TRUE(list.IsEmpty());
  }
  flat->cDims = 1;
}

TEST(AutomationValues, NumbersAndTextsAreShownAsText) {
  const auto text = [](VARTYPE type, auto VARIANT::*field, auto content) {
    VARIANT value = {};
    value.vt = type;
    value.*field = content;
    return ToUtf8(VARIANT2CString(value));
  };
  EXPECT_EQ(kvtest::Values(text(VT_I1, &VARIANT::cVal, -5), text(VT_UI1, &VARIANT::bVal, 200),
                           text(VT_I2, &VARIANT::iVal, -30000), text(VT_UI2, &VARIANT::uiVal, 60000),
                           text(VT_I4, &VARIANT::lVal, INT_MIN), text(VT_UI4, &VARIANT::ulVal, 4000000000u)),
            "-5|200|-30000|60000|-2147483648|4000000000");
  EXPECT_EQ(text(VT_I8, &VARIANT::llVal, LLONG_MIN), "-9223372036854775808");
  EXPECT_EQ(text(VT_UI8, &VARIANT::ullVal, ULLONG_MAX), "18446744073709551615");
  EXPECT_EQ(kvtest::Values(text(VT_BOOL, &VARIANT::boolVal, -1), text(VT_R8, &VARIANT::dblVal, 0.1),
                           text(VT_R8, &VARIANT::dblVal, 1e20), text(VT_R4, &VARIANT::fltVal, 0.1f)),
            "-1|0.1|1E+20|0.1");
  EXPECT_EQ(text(VT_DISPATCH, &VARIANT::pdispVal, nullptr) + text(VT_BYREF | VT_BSTR, &VARIANT::byref, nullptr), "");
  struct {
    DWORD bytes = 6;
    TCHAR units[4] = {'a', 0, 'b', 0};
  } counted;
  BSTR word = counted.units;
  EXPECT_EQ(text(VT_BSTR, &VARIANT::bstrVal, word), std::string("a\0b", 3));
  EXPECT_EQ(text(VT_BYREF | VT_BSTR, &VARIANT::byref, &word), std::string("a\0b", 3));
}

}  // namespace
