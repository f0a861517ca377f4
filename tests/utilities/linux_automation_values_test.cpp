// Automation objects in arrays. Elsewhere an object has many more operations.
#include <gtest/gtest.h>

#include <cstring>

#include "share/utilities/automation_values.h"

namespace {

class Thing final : public IDispatch {
 public:
  ULONG AddRef() override { return ++references; }
  ULONG Release() override { return --references; }
  ULONG references = 1;
};

TEST(AutomationObjects, GoThereAndBackWithTheirReferences) {
  Thing a, b;
  CList<IDispatch*> list;
  VARIANT value;
  std::memset(&value, 0xAA, sizeof value);
  EXPECT_EQ(PackIDispatchPointersToVariant(list, value), HRESULT(0x80004005));
  EXPECT_EQ(value.vt, VT_EMPTY);
  for (IDispatch* object : std::initializer_list<IDispatch*>{&a, nullptr, &b, &a}) list.AddTail(object);
  EXPECT_EQ(PackIDispatchPointersToVariant(list, value), S_OK);
  EXPECT_EQ(value.vt, VT_ARRAY | VT_DISPATCH);
  EXPECT_EQ(a.references, 3u);
  EXPECT_EQ(b.references, 2u);
  list.RemoveAll();
  EXPECT_EQ(UnpackIDispPointersFromSafearray(value, list), 3);
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
  std::vector<IDispatch*> out;
  for (POSITION at = list.GetHeadPosition(); at;) out.push_back(list.GetNext(at));
  EXPECT_EQ(out, (std::vector<IDispatch*>{&a, &b, &a}));
  EXPECT_EQ(a.references, 3u) << "the array's two are gone, the caller has two";
  EXPECT_EQ(b.references, 2u);
}

}  // namespace
