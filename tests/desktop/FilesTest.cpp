#include <sys/stat.h>

#include <QBuffer>
#include <QMimeData>
#include <QUrl>

#include "DesktopTest.h"
#include "hosts/desktop/ContentPreview.h"
#include "hosts/desktop/FileSelection.h"
#include "hosts/desktop/QRCodeView.h"

namespace quillbay::desktop {
namespace {

using FilesTest = DesktopTest;

TEST_F(FilesTest, WhatCannotBeSharedIsNamedAndLeftOut) {
  const std::string pipe = folder_.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"a folder", folder_.path(), "problem.folder"},
      {"a pipe, without waiting for its writer", pipe, "problem.not-regular"},
      {"a file that is not there", folder_.path() / "absent", "problem.missing"},
      {"a name that cannot be sent", folder_.write("caf\xE9", "x"), "problem.name"},
  };
  for (const auto& [name, path, key] : rows) {
    SCOPED_TRACE(name);
    FileSelection files;
    const QStringList problems = files.add(std::vector{path});
    ASSERT_EQ(problems.size(), 1);
    const QString form = localized(key);
    EXPECT_TRUE(problems[0].contains(form.mid(form.indexOf("%1") + 2, 8)))
        << problems[0].toStdString();
    EXPECT_TRUE(files.isEmpty());
  }
  FileSelection files;
  EXPECT_EQ(files.add({QUrl("https://example.org/photo.jpg")}).size(), 1);
}

TEST_F(FilesTest, AFileStandsInTheListOnceHoweverOftenItIsAdded) {
  const std::string path = folder_.write("notes & résumé.txt", "12345");
  FileSelection files;
  EXPECT_TRUE(files.add(std::vector{path, path}).isEmpty());
  EXPECT_TRUE(files.add({QUrl::fromLocalFile(QString::fromStdString(path))}).isEmpty());
  EXPECT_EQ(files.paths(), std::vector{path});
  EXPECT_EQ(files.byteCount(0), 5U);
  EXPECT_EQ(files.name(0), "notes & résumé.txt");
}

TEST_F(FilesTest, OfManyFilesOnlyTheRowsThatChangeAreDrawnAnew) {
  FileListModel model;
  model.setFiles(std::vector<FileListModel::File>(2000, {"name", 1}));
  model.setProgress({}, std::nullopt);
  QList<int> rows;
  QObject::connect(&model, &QAbstractItemModel::dataChanged, [&](const auto& from, const auto& to) {
    for (int row = from.row(); row <= to.row(); ++row) rows.append(row);
  });
  const std::vector<std::size_t> arrived = {1999, 1998};
  model.setProgress(arrived, FileListModel::Upload{1997, 40});
  EXPECT_EQ(rows, QList({1999, 1998, 1997}));
  model.setProgress(arrived, FileListModel::Upload{1997, 40});
  EXPECT_EQ(rows.size(), 3);
}

TEST_F(FilesTest, ThePreviewIsTheFirstPictureThatReads) {
  const std::string text = folder_.write("a.txt", "text");
  const std::string broken = folder_.write("b.png", "no picture");
  const std::string picture = folder_.path() / "c.png";
  QImage red(1000, 500, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(QString::fromStdString(picture)));

  // A photo that was taken with the camera held upright.
  QBuffer jpeg;
  ASSERT_TRUE(red.save(&jpeg, "JPG"));
  const QByteArray turned = QByteArray::fromHex(
      "ffe10022457869660000 4d4d002a00000008 0001 011200030000000100060000 00000000");
  const std::string photo = folder_.write("d.jpg", jpeg.buffer().insert(2, turned).toStdString());

  const QImage preview = contentPreview({text, broken, picture});
  EXPECT_EQ(preview.pixelColor(preview.rect().center()), QColor(Qt::red));
  EXPECT_EQ(preview.width(), 2 * preview.height());
  EXPECT_LE(preview.width(), 400) << "no more is kept than is shown";
  const QImage upright = contentPreview({photo});
  EXPECT_EQ(2 * upright.width(), upright.height());
  EXPECT_FALSE(contentPreview({text}).isNull()) << "the icon of its type";
}

TEST_F(FilesTest, TheCodeIsDarkOnLightWithAQuietZone) {
  QRCodeView view;
  view.setPalette(QPalette(Qt::black));
  view.setText(FakeService::link);
  view.resize(view.sizeHint());
  const QImage image = view.grab().toImage();
  const auto module = [&image](int x, int y) { return image.pixelColor((5 * x) + 2, (5 * y) + 2); };
  EXPECT_EQ(module(3, 3), QColor(Qt::white));
  EXPECT_EQ(module(4, 4), QColor(Qt::black)) << "a finder pattern: dark, light, dark";
  EXPECT_EQ(module(5, 5), QColor(Qt::white));
  EXPECT_EQ(module(7, 7), QColor(Qt::black));
}

}  // namespace
}  // namespace quillbay::desktop
