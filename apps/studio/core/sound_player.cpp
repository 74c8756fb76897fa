#include "apps/studio/core/sound_player.h"

#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <thread>
#include <vector>

#include "apps/studio/core/scheduler.h"

namespace lumiset::studio {
namespace {

constexpr int kBlockFrames = 1024;
constexpr int kBlocks = 8;            ///< that wait for the device
constexpr double kLongestWait = 0.4;  ///< of pictures for the sound's beginning, in seconds
constexpr auto kRefillEvery = std::chrono::milliseconds(5);

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The machine's usual device with one source that streams. It stays open, paused where nothing plays.
class Device {
public:
    ~Device() { close(); }

    /// False where there is none.
    bool open() {
        if (m_device != nullptr && !isConnected()) {
            close();
        }
        if (m_device == nullptr) {
            m_device = alcOpenDevice(nullptr);
            m_context = m_device != nullptr ? alcCreateContext(m_device, nullptr) : nullptr;
            if (m_context == nullptr || alcMakeContextCurrent(m_context) == ALC_FALSE ||
                alIsExtensionPresent("AL_EXT_float32") == AL_FALSE) {
                close();
                return false;
            }
            alGenSources(1, &m_source);
            alGenBuffers(kBlocks, m_buffers.data());
            if (alIsExtensionPresent("AL_SOFT_direct_channels") == AL_TRUE) {
                alSourcei(m_source, AL_DIRECT_CHANNELS_SOFT, AL_TRUE);  // as it is, without a room around it
            }
            if (alIsExtensionPresent("AL_SOFT_source_latency") == AL_TRUE) {
                m_offsets = reinterpret_cast<LPALGETSOURCEDVSOFT>(alGetProcAddress("alGetSourcedvSOFT"));
            }
            if (alcIsExtensionPresent(m_device, "ALC_SOFT_pause_device") == ALC_TRUE) {
                m_pause = reinterpret_cast<LPALCDEVICEPAUSESOFT>(alcGetProcAddress(m_device, "alcDevicePauseSOFT"));
                m_resume = reinterpret_cast<LPALCDEVICERESUMESOFT>(alcGetProcAddress(m_device, "alcDeviceResumeSOFT"));
            }
        } else if (m_resume != nullptr) {
            m_resume(m_device);
        }
        return true;
    }

    /// Begins with all blocks full.
    template <class Fill>
    void begin(const Fill& fill) {
        m_heardFrames = 0;
        for (const ALuint buffer : m_buffers) {
            put(buffer, fill);
        }
        alSourcePlay(m_source);
    }

    template <class Fill>
    void refill(const Fill& fill) {
        ALint done = 0;
        alGetSourcei(m_source, AL_BUFFERS_PROCESSED, &done);
        for (; done > 0; --done) {
            ALuint buffer = 0;
            alSourceUnqueueBuffers(m_source, 1, &buffer);
            m_heardFrames += kBlockFrames;
            put(buffer, fill);
        }
        ALint state = 0;
        alGetSourcei(m_source, AL_SOURCE_STATE, &state);
        if (state == AL_STOPPED) {  // it ran dry
            alSourcePlay(m_source);
        }
    }

    [[nodiscard]] double heardSeconds() const {
        std::array<ALdouble, 2> offset{};  // into the blocks that wait, and the device's delay
        if (m_offsets != nullptr) {
            m_offsets(m_source, AL_SEC_OFFSET_LATENCY_SOFT, offset.data());
        } else {
            ALfloat seconds = 0.0F;
            alGetSourcef(m_source, AL_SEC_OFFSET, &seconds);
            offset[0] = static_cast<double>(seconds);
        }
        return std::max(0.0, static_cast<double>(m_heardFrames) / media::kSoundRate + offset[0] - offset[1]);
    }

    void setGain(float gain) { alSourcef(m_source, AL_GAIN, gain); }

    void end() {
        if (m_device == nullptr) {
            return;
        }
        alSourceStop(m_source);
        alSourcei(m_source, AL_BUFFER, 0);  // lets go of all blocks
        if (m_pause != nullptr) {
            m_pause(m_device);
        }
    }

private:
    template <class Fill>
    void put(ALuint buffer, const Fill& fill) {
        fill(m_block.data(), kBlockFrames);
        alBufferData(buffer, AL_FORMAT_STEREO_FLOAT32, m_block.data(),
                     static_cast<ALsizei>(m_block.size() * sizeof(float)), media::kSoundRate);
        alSourceQueueBuffers(m_source, 1, &buffer);
    }

    [[nodiscard]] bool isConnected() const {
        ALCint connected = ALC_TRUE;
        if (alcIsExtensionPresent(m_device, "ALC_EXT_disconnect") == ALC_TRUE) {
            alcGetIntegerv(m_device, ALC_CONNECTED, 1, &connected);
        }
        return connected != ALC_FALSE;
    }

    void close() {
        if (m_context != nullptr) {
            alcMakeContextCurrent(nullptr);
            alcDestroyContext(m_context);  // and what belongs to it
            m_context = nullptr;
        }
        if (m_device != nullptr) {
            alcCloseDevice(m_device);
            m_device = nullptr;
        }
    }

    ALCdevice* m_device = nullptr;
    ALCcontext* m_context = nullptr;
    ALuint m_source = 0;
    std::array<ALuint, kBlocks> m_buffers{};
    std::vector<float> m_block = std::vector<float>(media::kSoundChannels * std::size_t{kBlockFrames});
    std::int64_t m_heardFrames = 0;  ///< of blocks that are done
    LPALGETSOURCEDVSOFT m_offsets = nullptr;
    LPALCDEVICEPAUSESOFT m_pause = nullptr;
    LPALCDEVICERESUMESOFT m_resume = nullptr;
};

enum State : std::uint64_t { kNone, kOpening, kPlaying };

/// Which of all plays, and how far it is, so that both change at once.
constexpr std::uint64_t stage(std::uint64_t number, State state) {
    return number << 2U | state;
}

}  // namespace

struct SoundPlayer::Inside {
    std::uint64_t lastNumber = 0;          ///< the caller's own
    std::atomic<std::uint64_t> wanted{0};  ///< what is to be heard, see `stage`; anything older ends
    std::atomic<bool> muted{false};
    double startedAt = 0.0;  ///< steady; the caller's own
    SoundClock clock;
    Device device;     ///< the thread's own
    Scheduler thread;  // last: it uses the others

    [[nodiscard]] bool isWanted(std::uint64_t number) const {
        const std::uint64_t now = wanted;
        return now >> 2U == number && (now & 3U) != kNone;
    }
    void play(const media::Source::Origin& origin, const SoundRange& range, std::uint64_t number);
};

// Until something else is to be played. What is damaged is silent, for the pictures may be good.
void SoundPlayer::Inside::play(const media::Source::Origin& origin, const SoundRange& range, std::uint64_t number) {
    try {
        std::unique_ptr<media::SoundReader> reader = media::openSound(origin);
        if (reader != nullptr && isWanted(number) && device.open()) {
            SoundLoop sound(std::move(reader), range);
            const auto fill = [&sound](float* frames, std::int64_t count) { sound.read(frames, count); };
            clock.reset();
            device.setGain(muted ? 0.0F : 1.0F);
            device.begin(fill);
            std::uint64_t opening = stage(number, kOpening);
            wanted.compare_exchange_strong(opening, stage(number, kPlaying));
            while (isWanted(number)) {
                clock.told(device.heardSeconds(), steadySeconds());
                device.setGain(muted ? 0.0F : 1.0F);
                device.refill(fill);
                std::this_thread::sleep_for(kRefillEvery);
            }
        }
    } catch (const std::exception&) {  // the pictures go on
    }
    device.end();
    for (const State state : {kOpening, kPlaying}) {
        std::uint64_t mine = stage(number, state);
        wanted.compare_exchange_strong(mine, stage(number, kNone));
    }
}

SoundPlayer::SoundPlayer() : m_inside(std::make_unique<Inside>()) {}

SoundPlayer::~SoundPlayer() {
    stop();
}

void SoundPlayer::start(const media::Source::Origin& origin, const SoundRange& range) {
    stop();
    if (!origin.path.empty()) {
        const std::uint64_t number = ++m_inside->lastNumber;
        m_inside->startedAt = steadySeconds();
        m_inside->wanted = stage(number, kOpening);
        m_inside->thread.replace(Scheduler::kOpening, [inside = m_inside.get(), origin, range, number] {
            inside->play(origin, range, number);
        });
    }
}

void SoundPlayer::stop() {
    m_inside->wanted = stage(m_inside->lastNumber, kNone);
}

void SoundPlayer::setMuted(bool muted) {
    m_inside->muted = muted;
}

bool SoundPlayer::isMuted() const {
    return m_inside->muted;
}

std::optional<double> SoundPlayer::seconds() const {
    const double now = steadySeconds();
    std::uint64_t opening = stage(m_inside->lastNumber, kOpening);
    if (now - m_inside->startedAt > kLongestWait) {
        // It is not to begin in the middle of the pictures.
        m_inside->wanted.compare_exchange_strong(opening, stage(m_inside->lastNumber, kNone));
    }
    const std::uint64_t stageNow = m_inside->wanted;
    if ((stageNow & 3U) == kPlaying) {
        return m_inside->clock.seconds(now);
    }
    return (stageNow & 3U) == kOpening ? std::optional(0.0) : std::nullopt;
}

}  // namespace lumiset::studio
