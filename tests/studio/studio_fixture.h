#pragma once

#include <gtest/gtest.h>

#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

#include "apps/studio/model/studio.h"
#include "hostkit/look_json.h"

namespace lumiset::studio {

/// The program on a small scene, without a window.
class StudioFixture : public testing::Test {
protected:
    void SetUp() override {
        QSettings().clear();
        ASSERT_TRUE(folder.isValid());
        open("scene:320x180:2");
    }

    static bool waitFor(const std::function<bool()>& condition, int milliseconds = 20000) {
        return QTest::qWaitFor(condition, milliseconds);
    }

    void open(const QString& clip) {
        studio.openFile(clip);
        ASSERT_TRUE(waitFor([&] { return studio.clip() == clip && isShown(); })) << clip.toStdString();
    }

    /// The picture of the present look, at full size, is there.
    [[nodiscard]] bool isShown() {
        const FrameShot& shot = studio.preview.shot();
        const FrameWish wish = studio.preview.wish();
        return shot.picture != nullptr && shot.wish.look == wish.look && shot.wish.frame == wish.frame &&
               shot.wish.size == wish.size && shot.wish.divisor == 1 && shot.wish.compares == wish.compares;
    }
    void settle() {
        ASSERT_TRUE(waitFor([this] { return isShown(); })) << "the picture did not come";
    }

    [[nodiscard]] std::string look() const { return hostkit::lookToJson(studio.catalogue(), studio.document.look()); }
    const ParameterDescription& parameter(const char* name) const {
        return studio.document.selectedDescription()->parameter(name);
    }
    [[nodiscard]] QString file(const char* name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    Studio studio;
};

}  // namespace lumiset::studio
