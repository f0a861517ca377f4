// A host with widgets on a virtual X server.
#include <gtest/gtest.h>

#include <QApplication>

#include "tests/desktop/boxes/x_server.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const kvtest::XServer server;
  if (!server.Running()) {
    fputs("Xvfb cannot be started: run scripts/test.sh, which installs it\n", stderr);
    return 1;
  }
  qputenv("QT_QPA_PLATFORM", "xcb");
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
