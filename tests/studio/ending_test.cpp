// The program is asked to end by the system while OpenGL renders.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>

namespace lumiset::studio {
namespace {

/// Stands in for the monitor of crashes: reads what hosts tell it of their frames.
class FrameRecord {
public:
    explicit FrameRecord(const QString& folder) {
        const QByteArray pipe = (folder + "/vantrelgpumonitor").toUtf8();
        EXPECT_EQ(::mkfifo(pipe.constData(), 0600), 0);
        m_pipe = ::open(pipe.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        EXPECT_GE(m_pipe, 0);
    }
    ~FrameRecord() { ::close(m_pipe); }
    FrameRecord(const FrameRecord&) = delete;
    FrameRecord& operator=(const FrameRecord&) = delete;

    /// Frames that began and have not ended, none once the host has said that it ends.
    qsizetype underWay() {
        char bytes[4096];
        for (ssize_t count = 0; (count = ::read(m_pipe, bytes, sizeof bytes)) > 0;) {
            m_rest.append(bytes, count);
        }
        for (qsizetype end = 0; (end = m_rest.indexOf('\0')) >= 0; m_rest.remove(0, end + 1)) {
            const QList<QByteArray> fields = m_rest.left(end).split(';');
            if (fields.back() == "1") {
                m_frames.insert(fields[fields.size() - 2]);
            } else if (fields.back() == "2") {
                m_frames.remove(fields[fields.size() - 2]);
            } else {
                m_frames.clear();
            }
        }
        return m_frames.size();
    }

private:
    int m_pipe = -1;
    QByteArray m_rest;
    QSet<QByteArray> m_frames;
};

TEST(EndingTest, SignalsEndNoFrameInItsMiddleAndLeaveWhatIsNotSaved) {
    if (QProcess::execute(LUMISET_PROGRAM, {"gpu", "info"}) != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    struct Case {
        int signal;
        bool twice;
    };
    for (const Case& each : {Case{SIGTERM, false}, Case{SIGINT, true}}) {
        const QTemporaryDir folder;
        QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
        for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
            own.insert(variable, folder.path());
        }
        own.insert("QT_QPA_PLATFORM", "offscreen");
        FrameRecord record(folder.path());
        QProcess program;
        program.setProcessEnvironment(own);
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(LUMISET_STUDIO, {"--do", "duplicate", "--do", "gpu", LUMISET_SOURCE "/looks/only_red.lumilook",
                                       "scene:640x360:1"});
        QElapsedTimer clock;
        clock.start();
        while (record.underWay() == 0 && clock.elapsed() < 60000 && program.state() != QProcess::NotRunning) {
            program.waitForFinished(1);
        }
        ASSERT_EQ(record.underWay(), 1) << "no frame began";
        const auto process = static_cast<pid_t>(program.processId());
        ::kill(process, each.signal);
        if (each.twice) {
            QTest::qSleep(1);
            ::kill(process, each.signal);
        }
        ASSERT_TRUE(program.waitForFinished(30000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 128 + each.signal);
        EXPECT_EQ(record.underWay(), 0) << "this would count as a crash";
        if (!each.twice) {
            const QDir kept(folder.filePath("lumiset/recovery"));
            EXPECT_EQ(kept.entryList({"*.lumilook"}, QDir::Files).size(), 1) << "to be restored";
        }
    }
}

}  // namespace
}  // namespace lumiset::studio
