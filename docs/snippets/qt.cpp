#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QCoreApplication>

using namespace quillbay;

int main(int argumentCount, char** arguments) {
  QCoreApplication application(argumentCount, arguments);

  // [poster]
  platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  // [poster]

  platform::DispatchQueue::main().async([] { QCoreApplication::quit(); });
  return QCoreApplication::exec();
}
