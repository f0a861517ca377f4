// Requests for units without a document that answers them. What a document answers: tests/host/document_units_test.cpp.
#include "share/utilities/units.h"

#include <gtest/gtest.h>

#include "share/objects/object.h"
#include "tests/registered.h"

namespace {

QFObject* g_document = nullptr;

TEST(Units, NobodyToAskGivesEmptyAndZero) {
  QFObject silent;
  kvtest::Register({.document = [] { return g_document; }});
  for (QFObject* document : {static_cast<QFObject*>(nullptr), &silent}) {
    g_document = document;
    EXPECT_EQ(ConvertLengthToUserUnits(1), _T(""));
    EXPECT_EQ(ConvertAngleUserUnitsToSysValue(_T("1")), 0.0);
    EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.0);
  }
  kvtest::Register({});
}

}  // namespace
