#include <QDir>
#include <QFile>
#include <QMimeData>

#include "apps/studio/model/numbered_pictures.h"
#include "apps/studio/model/stack_model.h"
#include "tests/studio/studio_fixture.h"

namespace lumiset::studio {
namespace {

using DocumentTest = StudioFixture;

TEST_F(DocumentTest, EveryEditIsOneStepInWordsAndUndoAllGivesTheFirstDocument) {
    Document& document = studio.document;
    const std::string first = look();
    struct Edit {
        const char* text;
        std::function<void()> act;
    };
    const std::vector<Edit> edits = {
        {"Add Old TV", [&] { document.addEffect("Old TV"); }},
        {"Preset Snow (Old TV)", [&] { document.applyPreset(0, "Snow"); }},
        {"Set Noise to 40 % (Old TV)", [&] { document.setValue(parameter("Noise"), ParamValue{.slider = 0.4F}); }},
        {"Add key of Noise", [&] { document.toggleKey(parameter("Noise")); }},
        {"Move key of Noise", [&] { document.moveKey(parameter("Noise"), 0.0, 1.0, false); }},
        {"Add Outline", [&] { document.addEffect("Outline"); }},
        {"Set strength to 50 %", [&] { document.setStrength(50.0); }},
        {"Duplicate Outline", [&] { document.duplicateEffect(1); }},
        {"Move Outline", [&] { document.moveEffect(2, 0); }},
        {"Switch Old TV off", [&] { document.setOff(1, true); }},
        {"Remove Outline", [&] { document.removeEffect(0); }},
        {"Reset all values",
         [&] {
             document.select(1);
             document.resetAll();
         }},
    };
    std::vector<std::string> looks = {first};
    for (const Edit& edit : edits) {
        edit.act();
        EXPECT_EQ(document.undoStack().undoText().toStdString(), edit.text);
        EXPECT_EQ(document.undoStack().count(), static_cast<int>(looks.size())) << edit.text;
        looks.push_back(look());
    }
    for (std::size_t i = looks.size() - 1; i > 0; --i) {
        document.undoStack().undo();
        EXPECT_EQ(look(), looks[i - 1]) << edits[i - 1].text;
    }
    for (std::size_t i = 1; i < looks.size(); ++i) {
        document.undoStack().redo();
        EXPECT_EQ(look(), looks[i]) << edits[i - 1].text;
    }
}

TEST_F(DocumentTest, AGestureIsOneStepAndNoneWhereItEndsAsItBegan) {
    Document& document = studio.document;
    document.addEffect("Outline");
    const int before = document.undoStack().count();
    const quint64 gesture = Document::newGesture();
    const ParamValue start = document.value(parameter("Width"));
    for (const float value : {0.1F, 0.2F, 0.3F}) {
        document.setValue(parameter("Width"), ParamValue{.slider = value}, gesture);
    }
    EXPECT_EQ(document.undoStack().count(), before + 1);
    EXPECT_EQ(document.undoStack().undoText(), "Set Width to 30 % (Outline)");
    document.setValue(parameter("Width"), start, gesture);
    EXPECT_EQ(document.undoStack().count(), before) << "back where it began";
    document.setValue(parameter("Width"), ParamValue{.slider = 0.5F}, Document::newGesture());
    document.setValue(parameter("Width"), ParamValue{.slider = 0.6F}, Document::newGesture());
    EXPECT_EQ(document.undoStack().count(), before + 2) << "two gestures are two steps";
    document.setValue(parameter("Width"), ParamValue{.slider = 0.6F});
    EXPECT_EQ(document.undoStack().count(), before + 2) << "nothing changed";
}

TEST_F(DocumentTest, SavesAndOpensWithTheClip) {
    QString clip = file("a clip.png");
    ASSERT_TRUE(QImage(64, 48, QImage::Format_RGB32).save(clip));
    open(clip);
    studio.document.addEffect("Viewfinder");
    EXPECT_TRUE(studio.document.isModified());
    ASSERT_TRUE(studio.save(file("Mine.lumilook")));
    EXPECT_FALSE(studio.document.isModified());
    EXPECT_EQ(studio.document.title(), "Mine");
    const std::string saved = look();
    studio.newDocument();
    open("scene:320x180:2");
    studio.openFile(file("Mine.lumilook"));
    ASSERT_TRUE(waitFor([&] { return studio.clip() == clip; }));
    EXPECT_EQ(look(), saved);

    // The clip has gone: the look opens all the same, and the window can ask for it.
    open("scene:320x180:2");
    QFile::remove(clip);
    QString missing;
    QObject::connect(&studio, &Studio::clipMissing, [&](const QString& name) { missing = name; });
    studio.openFile(file("Mine.lumilook"));
    ASSERT_TRUE(waitFor([&] { return !missing.isEmpty(); }));
    EXPECT_EQ(missing, clip);
    EXPECT_EQ(studio.clip(), "scene:320x180:2");
}

TEST_F(DocumentTest, ALookWithoutAClipIsShownOnTheScene) {
    Studio fresh;
    fresh.openFiles({LUMISET_SOURCE "/looks/only_red.lumilook"});
    ASSERT_TRUE(waitFor([&] { return fresh.preview.shot().picture != nullptr; }));
    EXPECT_FALSE(fresh.document.look().effects.empty());
}

TEST_F(DocumentTest, TellsOfFilesThatCannotBeUsed) {
    QString told;
    for (const auto signal : {&Studio::failed, &Studio::clipFailed}) {
        QObject::connect(&studio, signal, [&](const QString& text) { told = text; });
    }
    const auto write = [&](const char* name, const char* text) {
        QFile out(file(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(text);
        return out.fileName();
    };
    for (const QString& name : {write("broken.mp4", "no video"), write("broken.lumilook", "{"),
                                write("broken.lumvc", "<x>"), file("none.mov"), file("none.lumilook")}) {
        told.clear();
        studio.openFile(name);
        ASSERT_TRUE(waitFor([&] { return !told.isEmpty(); })) << name.toStdString();
        EXPECT_TRUE(told.contains(QFileInfo(name).fileName())) << told.toStdString();
    }
    told.clear();
    studio.document.addEffect("Outline");
    EXPECT_FALSE(studio.save(file("no/such/folder.lumilook")));
    EXPECT_FALSE(told.isEmpty());
    EXPECT_TRUE(studio.document.isModified()) << "what was not saved is not forgotten";
    settle();  // and everything still works
}

TEST_F(DocumentTest, PresetFilesComeAndGo) {
    studio.document.addEffect("Outline");
    studio.document.applyPreset(0, "Red Glow");
    studio.document.setValue(parameter("Width"), ParamValue{.slider = 0.25F});
    ASSERT_TRUE(studio.savePreset(file("glow.lumvc"))) << "no preset file";
    const ParamValue color = studio.document.value(parameter("Color"));
    studio.openFile(file("glow.lumvc"));
    ASSERT_EQ(studio.document.look().effects.size(), 2U);
    EXPECT_EQ(studio.document.selected(), 1);
    EXPECT_EQ(studio.document.value(parameter("Width")).slider, 0.25F);
    EXPECT_EQ(studio.document.value(parameter("Color")).color, color.color);
}

TEST_F(DocumentTest, UnsavedWorkOutlivesTheProgram) {
    const QString place = file("recovery");
    std::string lost;
    {
        Document document(studio.catalogue());
        auto recovery = std::make_unique<Recovery>(document, place);
        document.addEffect("Old TV");
        lost = hostkit::lookToJson(studio.catalogue(), document.look());
        recovery->writeNow();
        Document other(studio.catalogue());
        EXPECT_FALSE(Recovery(other, place).findLeftover()) << "of a program that runs";
        // As if it had been killed: its files stay, its lock is nobody's.
        QDir(place).mkdir("kept");
        for (const QString& name : QDir(place).entryList(QDir::Files)) {
            if (!name.endsWith(".lock")) {
                QFile::copy(place + '/' + name, place + "/kept/" + name);
            }
        }
    }
    EXPECT_TRUE(QDir(place).entryList({"*.lumilook"}, QDir::Files).isEmpty()) << "a good end leaves nothing";
    Document next(studio.catalogue());
    Recovery recovery(next, place + "/kept");
    const auto found = recovery.findLeftover();
    ASSERT_TRUE(found);
    EXPECT_EQ(hostkit::lookToJson(studio.catalogue(), found->look), lost);
    EXPECT_TRUE(QFile::exists(found->kept)) << "it stays until somebody has answered";
    recovery.discard(*found);
    EXPECT_FALSE(recovery.findLeftover());
}

TEST_F(DocumentTest, NumberedPicturesAreOneClip) {
    const auto write = [&](const char* name) {
        EXPECT_TRUE(QImage(16, 16, QImage::Format_RGB32).save(file(name)));
        return file(name);
    };
    const QString first = write("shot_08.png");
    const QString second = write("shot_09.png");
    const QString third = write("shot_10.png");
    const QString other = write("other.png");
    EXPECT_EQ(sequenceOf({third, first, second}).value_or(""), file("shot_%02d.png:8-10"));
    EXPECT_FALSE(sequenceOf({first, third})) << "one is missing between them";
    EXPECT_FALSE(sequenceOf({first, other}));
    EXPECT_FALSE(sequenceOf({first, write("tale_09.png")})) << "of two series";
    EXPECT_FALSE(sequenceOf({first, first}));
    EXPECT_FALSE(sequenceAround(other));
    EXPECT_EQ(sequenceAround(second).value_or(""), file("shot_%02d.png"));
    studio.openFiles({second, first, third});
    ASSERT_TRUE(waitFor([&] { return studio.clip().endsWith(":8-10"); }));
    EXPECT_EQ(studio.preview.clip()->frameCount, 3);
    EXPECT_FALSE(studio.proposedOutput("mp4").contains('%'));
}

TEST_F(DocumentTest, RowsAreDraggedToTheirPlace) {
    for (const char* effect : {"Old TV", "Outline", "Viewfinder"}) {
        studio.document.addEffect(effect);
    }
    StackModel model(studio.document);
    const auto order = [&] {
        QString all;
        for (int row = 0; row < model.rowCount(); ++row) {
            all += model.index(row).data().toString().at(0);
        }
        return all;
    };
    const auto drag = [&](int from, int before) {
        const std::unique_ptr<QMimeData> data(model.mimeData({model.index(from)}));
        EXPECT_FALSE(model.dropMimeData(data.get(), Qt::MoveAction, before, 0, {}));
        QCoreApplication::processEvents();
    };
    EXPECT_EQ(order(), "OOV");
    drag(2, 0);
    EXPECT_EQ(order(), "VOO");
    drag(0, 2);
    EXPECT_EQ(order(), "OVO");
    EXPECT_EQ(studio.document.selected(), 1);
    drag(1, 2);  // where it is already
    EXPECT_EQ(order(), "OVO");
    model.setData(model.index(1), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_TRUE(studio.document.look().effects[1].off);
}

}  // namespace
}  // namespace lumiset::studio
