#include <QuillbayPlatform/MainQueue.h>
#include <gmock/gmock.h>

#include <QApplication>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleMock(&argumentCount, arguments);
  // CTest lists the tests where there is no screen.
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  QApplication app(argumentCount, arguments);
  QApplication::setStyle("Fusion");
  QApplication::setQuitOnLastWindowClosed(false);
  quillbay::platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  return RUN_ALL_TESTS();
}
