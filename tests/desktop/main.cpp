#include <QuillbayPlatform/MainQueue.h>
#include <gtest/gtest.h>

#include <QApplication>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  QApplication app(argumentCount, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  quillbay::platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  return RUN_ALL_TESTS();
}
