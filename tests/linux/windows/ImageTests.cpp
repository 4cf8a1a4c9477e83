// SPDX-License-Identifier: MIT

#include <QImage>
#include <QWidget>
#include <algorithm>
#include <memory>
#include <utility>

#include "platform/linux/windows/QtImage.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

class ImageTest : public UserInterfaceTest {
  protected:
    /// The rendering of an image view of `size`.
    QImage shown(std::shared_ptr<platform::Image> image, platform::ImageScaling scaling,
                 QSize size) {
        platform::ImageViewDescription description{.image = std::move(image), .scaling = scaling};
        description.layout.width = size.width();
        description.layout.height = size.height();
        view = userInterface.makeImageView(description);
        auto& widget = dynamic_cast<QWidget&>(*view);
        EXPECT_EQ(widget.minimumSize(), size);
        EXPECT_EQ(widget.maximumSize(), size);
        widget.resize(size);
        QImage picture(size, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        widget.render(&picture, QPoint(), QRegion(), QWidget::RenderFlags());
        return picture;
    }

    /// The smallest rectangle around all visible pixels.
    static QRect extent(const QImage& image) {
        QRect found;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y).alpha() > 0) {
                    found |= QRect(x, y, 1, 1);
                }
            }
        }
        return found;
    }

    std::shared_ptr<platform::View> view;
};

TEST_F(ImageTest, PicturesAreThereInEveryPixelOfAFineScreen) {
    const auto picture = [&](const char* name) {
        return std::dynamic_pointer_cast<linuxdesktop::QtImage>(userInterface.imageNamed(name))
            ->icon({});
    };
    for (const qreal pixelsPerPixel : {1.0, 2.0}) {
        const int scale = static_cast<int>(pixelsPerPixel);
        EXPECT_EQ(picture("AppIcon").pixmap(QSize(72, 72), pixelsPerPixel).size(),
                  QSize(72, 72) * scale);
        EXPECT_EQ(picture("TarvikWordmark").pixmap(QSize(160, 32), pixelsPerPixel).size(),
                  QSize(160, 32) * scale);
    }
}

TEST_F(ImageTest, AnUnknownPictureIsNothing) {
    EXPECT_EQ(userInterface.imageNamed("NoSuchPicture"), nullptr);
    EXPECT_EQ(userInterface.imageNamed(""), nullptr);
}

TEST_F(ImageTest, AnUnknownSymbolIsNothing) {
    EXPECT_EQ(userInterface.systemSymbol("waveform", "Tarvik Dictate"), nullptr);
    EXPECT_EQ(userInterface.systemSymbol("", ""), nullptr);
}

TEST_F(ImageTest, EveryIconThatCanStandForTheApplicationShowsSomething) {
    for (const auto& icon :
         {userInterface.imageNamed("AppIcon"), userInterface.applicationIconImage(),
          userInterface.genericApplicationIcon()}) {
        const QRect seen =
            extent(shown(icon, platform::ImageScaling::proportionallyUpOrDown, {72, 72}));
        EXPECT_GT(seen.height(), 50);
        EXPECT_GT(seen.width(), 50);
    }
}

TEST_F(ImageTest, AnIconFillsItsPlaceAndKeepsItsShape) {
    const auto upOrDown = platform::ImageScaling::proportionallyUpOrDown;
    for (const QSize size : {QSize(72, 72), QSize(300, 200)}) {
        const QRect icon = extent(shown(userInterface.applicationIconImage(), upOrDown, size));
        const int side = std::min(size.width(), size.height());
        EXPECT_GT(icon.height(), side * 9 / 10);
        EXPECT_NEAR(icon.width(), icon.height(), 1);
        EXPECT_NEAR(icon.center().x(), size.width() / 2, 1);
        EXPECT_NEAR(icon.center().y(), size.height() / 2, 1);
    }
}

TEST_F(ImageTest, AWordmarkBecomesSmallerThanItIsButNeverLarger) {
    const auto down = platform::ImageScaling::proportionallyDown;
    const auto wordmark = userInterface.imageNamed("TarvikWordmark");
    const QRect natural = extent(shown(wordmark, down, {160, 32}));
    EXPECT_GT(natural.width(), 100);
    EXPECT_EQ(extent(shown(wordmark, down, {320, 64})).size(), natural.size());
    EXPECT_NEAR(extent(shown(wordmark, down, {80, 32})).width(), natural.width() / 2, 2);
}

TEST_F(ImageTest, AViewWithoutAPictureKeepsItsPlace) {
    EXPECT_TRUE(
        extent(shown(nullptr, platform::ImageScaling::proportionallyDown, {160, 32})).isEmpty());
}

}  // namespace

}  // namespace tarvik::tests
