#include <QuillbayPlatform/MainQueue.h>

#include <QApplication>
#include <QIcon>
#include <QTranslator>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "Arguments.h"
#include "Language.h"
#include "Localized.h"
#include "MainWindow.h"
#include "TerminationRequest.h"
#include "hosts/common/History.h"

namespace {

using namespace quillbay;

int run(char** argumentValues, const desktop::Arguments& arguments) {
  // Qt would look for options of its own among ours.
  int argumentCount = 1;
  QApplication app(argumentCount, argumentValues);
  QTranslator translator;
  desktop::applyLanguage(translator);
  QApplication::setApplicationName("quillbay-desktop");
  QApplication::setApplicationDisplayName(desktop::localized("app.name"));
  QApplication::setDesktopFileName("example.quillbay.QuillbayDesktop");
  QApplication::setWindowIcon(QIcon::fromTheme("example.quillbay.QuillbayDesktop",
                                               QIcon(":/example.quillbay.QuillbayDesktop.svg")));

  platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  host::History history(host::History::standardFile(host::processEnvironment()));
  desktop::MainWindow window(arguments, history);
  const desktop::TerminationRequest termination([&window] { window.terminate(); });
  window.show();
  const int status = QApplication::exec();
  if (const QString text = window.lastWords(); !text.isEmpty()) {
    std::fputs(("quillbay-desktop: " + text.toStdString() + "\n").c_str(), stderr);
  }
  // From here on in order: QApplication hands the clipboard over when it goes.
  return status;
}

}  // namespace

int main(int argumentCount, char** argumentValues) {
  const std::vector<std::string> words(argumentValues + 1, argumentValues + argumentCount);
  const auto arguments = desktop::parseArguments(words, host::processEnvironment());
  if (!arguments) {
    std::fputs(arguments.error().text.c_str(), arguments.error().status == 0 ? stdout : stderr);
    return arguments.error().status;
  }
  if (const auto problem = arguments->network.apply()) {
    std::fputs(("quillbay-desktop: " + *problem + "\n").c_str(), stderr);
    return 2;
  }
  return run(argumentValues, *arguments);
}
