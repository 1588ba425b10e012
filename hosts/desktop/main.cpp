#include <QuillbayPlatform/MainQueue.h>

#include <QApplication>
#include <QIcon>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Arguments.h"
#include "Language.h"
#include "Localized.h"
#include "MainWindow.h"
#include "TerminationRequest.h"

namespace {

using namespace quillbay;

std::optional<std::string> environmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

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
  desktop::MainWindow window(arguments);
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
  const auto arguments = desktop::parseArguments(words, environmentVariable);
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
