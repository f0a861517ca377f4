// Automation texts, values and arrays: the calls as their descriptions have them.
#include "platform/automation.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(Automation, TextsAreCounted) {
  BSTR text = SysAllocString(_T("abc"));
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(std::u16string(text), u"abc");
  SysFreeString(text);
  text = SysAllocStringLen(_T("a\0bcd"), 3);
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(std::u16string(text, 4), std::u16string(u"a\0b\0", 4));
  SysFreeString(text);
  text = SysAllocStringLen(nullptr, 0);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(*text, u'\0');
  SysFreeString(text);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysAllocStringLen(nullptr, UINT_MAX), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  SysFreeString(nullptr);
}

TEST(Automation, ArrayKeepsItsBounds) {
  SAFEARRAYBOUND bound = {3, -1};
  SAFEARRAY* const array = SafeArrayCreate(VT_I2, 1, &bound);
  ASSERT_NE(array, nullptr);
  VARTYPE type = VT_EMPTY;
  LONG at = 0;
  EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
  EXPECT_EQ(type, VT_I2);
  EXPECT_EQ(SafeArrayGetDim(array), 1u);
  EXPECT_EQ(SafeArrayGetLBound(array, 1, &at), S_OK);
  EXPECT_EQ(at, -1);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &at), S_OK);
  EXPECT_EQ(at, 1);
  for (const UINT dimension : {0, 2}) EXPECT_EQ(SafeArrayGetUBound(array, dimension, &at), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &at), E_INVALIDARG);
  for (LONG index : {-2, 2, INT_MIN, INT_MAX}) {
    std::int16_t number = 0;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &number), DISP_E_BADINDEX) << index;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &number), DISP_E_BADINDEX) << index;
  }
  EXPECT_EQ(SafeArrayGetElement(nullptr, &at, &at), E_INVALIDARG);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(SafeArrayDestroy(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
}

TEST(Automation, ArrayOwnsItsTexts) {
  SAFEARRAYBOUND bound = {2, 0};
  SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 1, &bound);
  LONG index = 1;
  BSTR text = SysAllocString(_T("first"));
  EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
  SysFreeString(text);
  text = SysAllocString(_T("second"));
  EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
  *text = u'X';
  SysFreeString(text);
  EXPECT_EQ(SafeArrayGetElement(array, &index, &text), S_OK);
  EXPECT_EQ(std::u16string(text), u"second");
  SysFreeString(text);
  index = 0;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &text), S_OK);
  EXPECT_EQ(text, nullptr);
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_ARRAY | VT_BSTR;
  value.parray = array;
  EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(Automation, WrongTypesAndSizesAreRefused) {
  SAFEARRAYBOUND bound = {2, 0};
  for (const VARTYPE type : {WORD(VT_EMPTY), WORD(VT_NULL), WORD(12), WORD(VT_ARRAY | VT_R8), WORD(0xFFFF)})
    EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr) << type;
  EXPECT_EQ(SafeArrayCreate(VT_R8, 0, &bound), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_R8, 2, &bound), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_R8, 1, nullptr), nullptr);
  bound = {2, INT_MAX};
  EXPECT_EQ(SafeArrayCreate(VT_R8, 1, &bound), nullptr) << "an index beyond LONG";
  VARIANT value;
  VariantInit(&value);
  value.vt = 12345;
  EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE);
  EXPECT_EQ(value.vt, 12345);
}

}  // namespace
