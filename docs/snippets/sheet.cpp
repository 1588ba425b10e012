#include <QApplication>
#include <QVBoxLayout>

#include "Promises.h"

// [sheet]
#include <QuillbayCloud/ui/ShareViewController.h>
// [sheet]

using namespace quillbay;

int main(int argumentCount, char** arguments) {
  QApplication application(argumentCount, arguments);
  QWidget window;
  auto* const layout = new QVBoxLayout(&window);
  bool isStarted = false;
  const auto start = [&](const cloud::SessionConfiguration&) { isStarted = true; };

  // [sheet]
  auto sheet = cloud::ShareViewController::create(
      {cloud::SessionConfiguration::default_(), QImage("preview.png")});
  sheet->setOnConfirm([&](const cloud::SessionConfiguration& chosen) { start(chosen); });
  sheet->setOnCancel([&] { window.close(); });
  layout->addWidget(&sheet->view());
  // [sheet]

  window.show();
  sheet->didSelectShareButton();
  expect(isStarted, "Share hands the choices to the host");
  sheet->didSelectCancelButton();
  expect(!window.isVisible(), "Cancel is told to the host");
}
