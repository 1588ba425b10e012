#include <csignal>

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

#include "DesktopTest.h"
#include "hosts/desktop/Notifications.h"

namespace quillbay::desktop {
namespace {

/// The program and what surrounds it.
using SystemTest = DesktopTest;

TEST_F(SystemTest, TheProgramReadsItsArguments) {
  const std::tuple<const char*, int, const char*> rows[] = {{"--version", 0, "quillbay-desktop 1."},
                                                            {"--help", 0, "--cacert"},
                                                            {"--frobnicate", 2, "--frobnicate"}};
  for (const auto& [argument, status, text] : rows) {
    SCOPED_TRACE(argument);
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QUILLBAY_DESKTOP_PROGRAM, {argument});
    ASSERT_TRUE(program.waitForFinished(10'000));
    EXPECT_EQ(program.exitCode(), status);
    EXPECT_TRUE(program.readAll().contains(text));
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

/// What a desktop offers to programs, seen from its side of the bus.
class Desktop : public QDBusVirtualObject {
  Q_OBJECT

 public:
  Desktop() {
    EXPECT_TRUE(bus_.registerService("org.freedesktop.Notifications"));
    EXPECT_TRUE(bus_.registerVirtualObject(kPath, this));
    EXPECT_TRUE(bus_.connect("", "", "com.canonical.Unity.LauncherEntry", "Update", this,
                             SLOT(update(QString, QVariantMap))));
  }
  ~Desktop() override { QDBusConnection::disconnectFromBus("desktop"); }

  QString introspect(const QString& /*path*/) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != "Notify") return false;
    notifications_.append(message.arguments());
    return connection.send(message.createReply(static_cast<uint>(notifications_.size())));
  }
  void press(uint notification, const QString& key) {
    bus_.send(QDBusMessage::createSignal(kPath, "org.freedesktop.Notifications", "ActionInvoked")
              << notification << key);
  }

  static constexpr const char* kPath = "/org/freedesktop/Notifications";
  QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "desktop");
  QList<QVariantList> notifications_;
  std::pair<QString, QVariantMap> latestUpdate_;

 public slots:
  void update(const QString& entry, const QVariantMap& properties) {
    latestUpdate_ = {entry, properties};
  }
};

TEST_F(SystemTest, TheDesktopShowsTheProgressAndANotificationThatCopiesTheLink) {
  if (!QDBusConnection::sessionBus().isConnected()) GTEST_SKIP() << "run under dbus-run-session";
  Desktop desktop;
  QGuiApplication::setDesktopFileName("desktop-file");
  const auto gate = service_.hold(Call::uploadUrl, std::nullopt, 1);
  openAndShare({first_, second_}, "run.uploading");
  const QString entry = "application://desktop-file.desktop";
  EXPECT_TRUE(waitUntil([&] {
    const auto [name, update] = desktop.latestUpdate_;
    return name == entry && update.value("progress-visible") == true &&
           update.value("progress") == 0.5;
  }));
  QWidget front;
  test::showActive(front);
  gate->open();
  ASSERT_TRUE(waitUntil([&] { return !desktop.notifications_.isEmpty(); }));
  EXPECT_TRUE(waitUntil([&] { return desktop.latestUpdate_.second["progress-visible"] == false; }));
  EXPECT_EQ(desktop.notifications_.front().value(4), FakeService::link);
  EXPECT_EQ(desktop.notifications_.front().value(5).toStringList(),
            QStringList({"0", "Copy Link", "1", "Open in Browser"}));
  QApplication::clipboard()->clear();
  EXPECT_TRUE(waitUntil([&] {
    desktop.press(1, "0");
    return QApplication::clipboard()->text() == FakeService::link;
  }));

  QWidget back;
  Notifications inFront(front);
  Notifications inBack(back);
  QStringList performed;
  inFront.show("not told", "");
  inBack.show("Done", "<b>link</b>",
              {{"A", [&] { performed << "A"; }}, {"B", [&] { performed << "B"; }}});
  ASSERT_TRUE(waitUntil([&] {
    desktop.press(1, "0");
    desktop.press(2, "default");
    desktop.press(2, "1");
    return !performed.isEmpty();
  }));
  EXPECT_EQ(performed.front(), "B") << "the others are not ours";
  EXPECT_EQ(desktop.notifications_[1].value(4), "&lt;b&gt;link&lt;/b&gt;") << "bodies are markup";
}

}  // namespace
}  // namespace quillbay::desktop

#include "SystemTest.moc"
