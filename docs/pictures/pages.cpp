#include <QuillbayPlatform/JSONDecoder.h>
#include <QuillbayPlatform/MainQueue.h>
#include <QuillbayPlatform/StringTable.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleHints>
#include <QTest>
#include <QTranslator>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FakeService.h"
#include "Scenery.h"
#include "TemporaryFolder.h"
#include "hosts/common/History.h"
#include "hosts/desktop/Language.h"
#include "hosts/desktop/Localized.h"
#include "hosts/desktop/MainWindow.h"

// Draws the pages of quillbay-desktop and its questions as images, to look at after a change. The
// window is the real one; the service plays what a page needs.

namespace {

using namespace quillbay;
using test::FakeService;
using test::Reply;
using test::Request;
using Call = FakeService::Call;
using State = host::RememberedShare::State;

constexpr int kSettleMilliseconds = 150;

/// A refusal of the service, with its text for people.
Reply refusal(int status) {
  return Reply::json(R"({"message":"quota exceeded","status":)" + std::to_string(status) + "}",
                     status);
}

class Pictures {
 public:
  Pictures(QString folder, QString suffix)
      : folder_(std::move(folder)), suffix_(std::move(suffix)) {
    service_.install();
    const std::string photo = work_ / "Lake at dawn.png";
    pictures::landscape().save(QString::fromStdString(photo));
    files_ = {photo, work_.writePattern("Boat trip.mp4", 3'400'000),
              work_.writePattern("Route.gpx", 48'200)};
    giveTitle();
    fillHistory();
  }

  /// Whether every picture could be made.
  bool drawAll() {
    drawShares();
    drawRun();
    drawFailures();
    return isGood_;
  }

 private:
  void fillHistory() {
    struct Row {
      std::string title;
      std::string expiration;
      State state;
      std::vector<host::RememberedFile> files;
    };
    constexpr double kFirstOfMay2026 = 1777629600;
    double time = kFirstOfMay2026;
    for (const Row& row :
         {Row{"Minutes of May", "", State::complete, {{"minutes.pdf", 184'000, true}}},
          Row{"Summer camp",
              R"(,"expiration":1777716000)",
              State::complete,
              {{"a.jpg", 2'100'000, true}, {"b.jpg", 2'700'000, true}}},
          Row{"Recording of the concert",
              R"(,"expiration":2208988800)",
              State::unfinished,
              {{"part 1.flac", 310'000'000, true}, {"part 2.flac", 295'000'000, false}}}}) {
      const auto session = platform::JSONDecoder().decode<cloud::Session>(
          R"({"id":"old","token":"t","url":"https://cloud.quillbay.example/s/old","items":[],)"
          R"("title":")" +
          row.title + '"' + row.expiration + "}");
      const auto identifier =
          history_.add("pictures", *session, cloud::SessionLinkType::page, row.files,
                       platform::dateFromSecondsSince1970(time += 9000));
      history_.setState(identifier, row.state);
    }
  }

  /// As the service does to the session that it creates.
  void giveTitle() {
    service_.setHook(Call::createSession, [](const Request&, Reply reply) {
      reply.body.insert(1, R"("title":"Lake at dawn",)");
      return reply;
    });
  }

  void drawShares() {
    open({});
    draw("drop", *window_);
    click("shares.show");
    draw("shares", *window_);
    click("run.delete");
    drawQuestion("delete-question");
  }

  void drawRun() {
    open(files_);
    draw("form", *window_);
    auto gate = service_.hold(Call::createSession);
    confirm("run.cancel");
    draw("creating", *window_);
    gate->open();
    waitFor("run.again");

    giveTitle();
    gate = std::make_shared<test::Gate>();
    service_.setHook(Call::store, [gate](const Request& request, Reply ordinary) {
      if (request.target().contains("item-2")) ordinary.sendAfter = gate;
      return ordinary;
    });
    share("run.copy");
    const auto* const bar = window_->findChild<QProgressBar*>();
    waitUntil([bar] { return bar->value() * 2 > bar->maximum(); });
    draw("uploading", *window_);
    window_->close();
    drawQuestion("close-question");
    gate->open();
    waitFor("run.again");

    service_.answer(Call::finalize, refusal(503));
    share("run.retry");
    draw("waiting", *window_);
    service_.setHook(Call::finalize, {});
    click("run.retry");
    waitFor("run.again");
    draw("done", *window_);
    click("run.qr-code");
    draw("done-code", *window_);
  }

  void drawFailures() {
    service_.answer(Call::finalize, refusal(413));
    share("shares.continue");
    draw("unfinished", *window_);
    service_.answer(Call::createSession, refusal(413));
    share("files.add");
    draw("failure", *window_);
  }

  void open(const std::vector<std::string>& files) {
    window_ =
        std::make_unique<desktop::MainWindow>(desktop::Arguments{"pictures", {}, files}, history_);
    window_->show();
    window_->activateWindow();
    auto* const field = window_->findChild<QLineEdit*>();
    if (field != nullptr) waitUntil([field] { return field->hasFocus(); });
  }
  void confirm(const char* key) {
    auto* const field = window_->findChild<QLineEdit*>();
    QTest::keyClicks(field, "Lake at dawn");
    QTest::keyClick(field, Qt::Key_Return);
    waitFor(key);
  }
  void share(const char* key) {
    open(files_);
    confirm(key);
  }

  QPushButton* button(const char* key, QWidget& window) const {
    for (auto* const candidate : window.findChildren<QPushButton*>()) {
      const QString text = desktop::localized(key).remove('&');
      const bool isIt = candidate->isVisible() && candidate->text().remove('&') == text;
      if (isIt && candidate->isEnabled()) return candidate;
    }
    return nullptr;
  }
  void click(const char* key) {
    waitFor(key);
    if (auto* const found = button(key, *window_)) found->click();
  }
  void waitFor(const char* key) {
    if (!waitUntil([&] { return button(key, *window_) != nullptr; }))
      std::fprintf(stderr, "no %s\n", key);
  }
  bool waitUntil(const std::function<bool()>& condition) {
    const bool holds = QTest::qWaitFor(condition, 10'000);
    isGood_ = isGood_ && holds;
    return holds;
  }

  void draw(const QString& name, QWidget& window) {
    // Layouts, the focus and the figures, which change with the clock.
    QTest::qWait(kSettleMilliseconds);
    // 0 is the smallest file.
    const QString file = folder_ + "/" + name + "-" + suffix_ + ".png";
    isGood_ = window.grab().save(file, "PNG", 0) && isGood_;
  }
  void drawQuestion(const QString& name) {
    auto* const question = window_->findChild<QMessageBox*>();
    draw(name, *question);
    question->reject();
  }

  const QString folder_;
  const QString suffix_;
  const test::TemporaryFolder work_;
  host::History history_{work_ / "state/history.sqlite"};
  FakeService service_;
  std::vector<std::string> files_;
  std::unique_ptr<desktop::MainWindow> window_;
  bool isGood_ = true;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  QApplication app(argumentCount, arguments);
  QCommandLineParser options;
  options.addOption({"language", "Language of the texts.", "tag", "en"});
  options.addOption({"dark", "Light letters on dark ground."});
  options.addPositionalArgument("folder", "Where to write the images.");
  options.addPositionalArgument("suffix", "End of their names.");
  options.process(app);

  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (options.isSet("dark")) QApplication::setPalette(pictures::darkPalette());
  platform::setPreferredLanguages({options.value("language").toStdString()});
  QTranslator translator;
  desktop::applyLanguage(translator);
  QApplication::setQuitOnLastWindowClosed(false);
  // What has just appeared can be pressed at once.
  QGuiApplication::styleHints()->setMouseDoubleClickInterval(0);
  platform::setMainQueuePoster([](std::function<void()> runOneItem) {
    QMetaObject::invokeMethod(qApp, std::move(runOneItem), Qt::QueuedConnection);
  });
  const QStringList words = options.positionalArguments();
  return Pictures(words.value(0), words.value(1)).drawAll() ? 0 : 1;
}
