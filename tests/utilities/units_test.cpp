// Requests for units, as the active document gets and answers them.
#include "share/utilities/units.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/numbers.h"
#include "share/objects/object.h"
#include "tests/registered.h"

namespace {

// A document in inches and degrees over an internal unit of metres and radians, which keeps the messages that it got.
class InchDocument : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra) override {
    messages.push_back(message);
    EXPECT_EQ(extra, 0);
    if (message != 247) return 0;
    auto& request = *reinterpret_cast<QFUnitsConversion*>(argument);
    const bool isAngle = request.GetUnitEntityType() == 1;
    const double unit = isAngle ? 0.0174532925 : 0.0254;
    CString text;
    switch (request.GetUnitConversionType()) {
      case QF_UNITS_SYS_TO_USER:
        EXPECT_EQ(request.GetUserUnit(), _T(""));
        text.Format(isAngle ? _T("%.2f deg") : _T("%.2f in"), request.GetSysVal() / unit);
        request.SetUserUnit(text);
        break;
      case QF_UNITS_USER_TO_SYS:
        EXPECT_EQ(request.GetSysVal(), 0.0);
        request.SetSysVal(_wtof(request.GetUserUnit()) * unit);
        break;
      case QF_UNITS_SPIN_INCREMENT: request.SetSysVal(isAngle ? 5 : 0.125);
    }
    return 1;
  }

  std::vector<int> messages;
};

QFObject* g_document = nullptr;

class Units : public testing::Test {
 protected:
  Units() {
    kvtest::Register({.document = [] { return g_document; }});
  }
  ~Units() override {
    g_document = nullptr;
    kvtest::Register({});
  }
};

}  // namespace

TEST_F(Units, DocumentConverts) {
  InchDocument document;
  g_document = &document;
  EXPECT_EQ(ConvertLengthToUserUnits(0.0508), _T("2.00 in"));
  EXPECT_EQ(ConvertAngleToUserUnits(0.78539816), _T("45.00 deg"));
  EXPECT_DOUBLE_EQ(ConvertLengthUserUnitsToSysValue(_T("10 in")), 0.254);
  EXPECT_DOUBLE_EQ(ConvertAngleUserUnitsToSysValue(_T("100")), 1.74532925);
  EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.125);
  EXPECT_EQ(GetAngleUnitSpinIncrement(), 5.0);
  EXPECT_EQ(document.messages, std::vector<int>(6, 247));
}

TEST_F(Units, NobodyToAskGivesEmptyAndZero) {
  QFObject silent;
  for (QFObject* document : {static_cast<QFObject*>(nullptr), &silent}) {
    g_document = document;
    EXPECT_EQ(ConvertLengthToUserUnits(1), _T(""));
    EXPECT_EQ(ConvertAngleUserUnitsToSysValue(_T("1")), 0.0);
    EXPECT_EQ(GetLengthUnitSpinIncrement(), 0.0);
  }
}
