#include "TaskbarProgress.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QVariantMap>

namespace quillbay::desktop {

TaskbarProgress::~TaskbarProgress() { show(std::nullopt); }

void TaskbarProgress::show(std::optional<double> fraction) {
  const auto percent = fraction.transform([](double part) { return static_cast<int>(part * 100); });
  if (percent == shownPercent_) return;
  shownPercent_ = percent;
  QDBusMessage update =
      QDBusMessage::createSignal("/example/quillbay/QuillbayDesktop/LauncherEntry",
                                 "com.canonical.Unity.LauncherEntry", "Update");
  const QVariantMap properties = {{"progress", percent.value_or(0) / 100.0},
                                  {"progress-visible", percent.has_value()}};
  update << "application://" + QGuiApplication::desktopFileName() + ".desktop" << properties;
  QDBusConnection::sessionBus().send(update);
}

}  // namespace quillbay::desktop
