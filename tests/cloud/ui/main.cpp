#include <gtest/gtest.h>

#include <QApplication>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" QUILLBAY_TEST_SCREENS);
  QApplication app(argumentCount, arguments);
  QApplication::setStyle("Fusion");
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
