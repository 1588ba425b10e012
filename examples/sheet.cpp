// A Qt host: lets the user choose in the share sheet, then shares the files named on the command
// line and prints their link.

#include "TestService.h"

#include <QuillbayCloud/QuillbayCloud.h>
#include <QuillbayCloud/ui/ShareViewController.h>

#include <QApplication>
#include <QVBoxLayout>
#include <cstdlib>
#include <iostream>

using namespace quillbay;

namespace {

/// Ends the program with the run. The caller keeps the controller until then.
std::shared_ptr<cloud::SessionController> share(const std::vector<platform::URL>& files,
                                                const cloud::SessionConfiguration& choices) {
  auto controller = cloud::SessionController::create({"sheet-example", files}, choices);
  controller->createSession(
      [](const cloud::Session& session) {
        std::cout << session.url().absoluteString() << '\n' << std::flush;
      },
      [](std::expected<cloud::Session, cloud::QuillbayCloudError> result) {
        if (!result) std::cerr << result.error().description() << '\n';
        QApplication::exit(result ? EXIT_SUCCESS : EXIT_FAILURE);
      });
  return controller;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const QApplication application(argumentCount, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  useTestService();
  std::vector<platform::URL> files;
  for (int i = 1; i < argumentCount; ++i) files.push_back(platform::URL::fileURL(arguments[i]));

  // In this order: the controllers go before the window.
  QWidget window;
  std::shared_ptr<cloud::SessionController> run;
  const auto sheet =
      cloud::ShareViewController::create({cloud::SessionConfiguration::default_(), QImage()});
  sheet->setOnConfirm([&](const cloud::SessionConfiguration& choices) {
    window.hide();
    run = share(files, choices);
  });
  sheet->setOnCancel([] { QApplication::exit(EXIT_FAILURE); });

  auto* const layout = new QVBoxLayout(&window);
  layout->setContentsMargins({});
  layout->addWidget(&sheet->view());
  window.show();
  return QApplication::exec();
}
