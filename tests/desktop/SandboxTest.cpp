#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QTest>

#include "DesktopTest.h"
#include "hosts/common/NetworkOptions.h"
#include "hosts/common/OptionTable.h"
#include "hosts/desktop/MainWindow.h"

namespace quillbay::desktop {
namespace {

/// The sandbox as its own program.
class SandboxTest : public DesktopTest {
 protected:
  SandboxTest() {
    const QString ready = path("ready");
    sandbox_.start(QUILLBAY_SANDBOX_PROGRAM,
                   {"--port", "0", "--data", path("data"), "--ready-file", ready});
    EXPECT_TRUE(waitUntil([&] { return QFile(ready).size() > 0; }));
  }
  ~SandboxTest() override {
    window_.reset();
    sandbox_.terminate();
    sandbox_.waitForFinished();
  }

  QString path(const char* name) const { return QString::fromStdString(folder_.path() / name); }

  /// The value in the ready file's line "export NAME=value".
  std::optional<std::string> exported(const std::string& name) const {
    QFile ready(path("ready"));
    EXPECT_TRUE(ready.open(QIODevice::ReadOnly));
    for (const QByteArray& line : ready.readAll().split('\n')) {
      const QByteArray start = "export " + QByteArray::fromStdString(name) + "=";
      if (line.startsWith(start)) return line.sliced(start.size()).toStdString();
    }
    return std::nullopt;
  }

  QByteArray fetched(const QString& link) const {
    QProcess curl;
    curl.start("curl", {"--silent", "--location", "--cacert",
                        QString::fromStdString(*exported("QUILLBAY_CACERT")), link});
    EXPECT_TRUE(waitUntil([&] { return curl.state() == QProcess::NotRunning; }));
    return curl.readAllStandardOutput();
  }

  QProcess sandbox_;
};

TEST_F(SandboxTest, WhatIsSharedWithTheKeyboardComesBackByteForByte) {
  std::string bytes(5'000'000, '\0');
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    bytes[index] = static_cast<char>((index * index) >> 7);
  }
  const auto network =
      host::RawNetworkOptions().checked([this](const char* name) { return exported(name); });
  ASSERT_TRUE(network && !network->apply());

  open({folder_.write("video & clip.bin", bytes)});
  QTest::keyClicks(&titleField(), "Holiday");
  // Past password and expiration, to the second kind of link.
  for (int presses = 0; presses < 3; ++presses) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
  EXPECT_EQ(qobject_cast<QComboBox*>(QApplication::focusWidget())->currentText(), "Download");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);

  ASSERT_TRUE(waitUntil([&] { return showsText("run.done"); }));
  EXPECT_EQ(fetched(shownLink()).toStdString(), bytes);
}

}  // namespace
}  // namespace quillbay::desktop
