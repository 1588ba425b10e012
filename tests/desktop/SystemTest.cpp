#include <csignal>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTest>
#include <QTranslator>

#include <QuillbayPlatform/StringTable.h>

#include "DesktopTest.h"
#include "hosts/desktop/Language.h"
#include "hosts/desktop/Notification.h"

namespace quillbay::desktop {
namespace {

/// The program and what surrounds it.
using SystemTest = DesktopTest;

TEST_F(SystemTest, TheProgramReadsItsArguments) {
  struct Row {
    const char* argument;
    int status;
    const char* text;
  };
  for (const Row& row : {Row{"--version", 0, "quillbay-desktop 1."}, Row{"--help", 0, "--cacert"},
                         Row{"--frobnicate", 2, "--frobnicate"}}) {
    SCOPED_TRACE(row.argument);
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QUILLBAY_DESKTOP_PROGRAM, {row.argument});
    ASSERT_TRUE(program.waitForFinished(10'000));
    EXPECT_EQ(program.exitCode(), row.status);
    EXPECT_TRUE(program.readAll().contains(row.text));
  }
}

TEST_F(SystemTest, ASignalEndsTheProgramInOrder) {
  QProcess program;
  program.start(QUILLBAY_DESKTOP_PROGRAM, {QString::fromStdString(first_)});
  ASSERT_TRUE(program.waitForStarted());
  const std::string pid = std::to_string(program.processId());
  const auto handlesSignal = [&] {
    const std::string status = test::readFile("/proc/" + pid + "/status");
    const std::string caught = status.substr(status.find("SigCgt:") + 7, 20);
    return ((std::stoull(caught, nullptr, 16) >> (SIGTERM - 1)) & 1) != 0;
  };
  ASSERT_TRUE(waitUntil(handlesSignal));
  program.terminate();
  ASSERT_TRUE(program.waitForFinished(10'000));
  EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
}

TEST_F(SystemTest, EverythingIsInOneLanguage) {
  struct Row {
    std::vector<std::string> preferred;
    const char* close;   // ours
    const char* cancel;  // Qt's
  };
  const QLocale before;
  for (const Row& row : {Row{{"fr_FR"}, "Close", "Cancel"}, Row{{"ar"}, "Close", "Cancel"},
                         Row{{"fr", "de_AT", "en"}, "Schließen", "Abbrechen"}}) {
    SCOPED_TRACE(row.preferred.front());
    platform::setPreferredLanguages(row.preferred);
    QTranslator translator;
    applyLanguage(translator);
    EXPECT_EQ(localized("run.close").remove('&').toStdString(), row.close);
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel").toStdString(), row.cancel);
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::LeftToRight);
    EXPECT_EQ(QLocale().decimalPoint(), row.cancel == QString("Cancel") ? "." : ",");
  }
  QLocale::setDefault(before);
}

/// A notification service that keeps what it is told.
class Notifications : public QDBusVirtualObject {
 public:
  QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != "Notify") return false;
    calls.append(message.arguments());
    return connection.send(message.createReply(1U));
  }
  QList<QVariantList> calls;
};

TEST_F(SystemTest, TheDesktopIsNotifiedUnlessTheWindowIsInFront) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) GTEST_SKIP() << "run under dbus-run-session";
  Notifications service;
  ASSERT_TRUE(bus.registerService("org.freedesktop.Notifications"));
  ASSERT_TRUE(bus.registerVirtualObject("/org/freedesktop/Notifications", &service));
  QWidget front;
  front.show();
  front.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&front));
  QWidget back;
  notify(front, "not told", "");
  notify(back, "Done", "<b>link</b>");
  ASSERT_TRUE(waitUntil([&] { return !service.calls.isEmpty(); }));
  EXPECT_EQ(service.calls.front().value(3), "Done");
  EXPECT_EQ(service.calls.front().value(4), "&lt;b&gt;link&lt;/b&gt;") << "bodies are markup";
  bus.unregisterObject("/org/freedesktop/Notifications");
}

}  // namespace
}  // namespace quillbay::desktop
