#include "Resources/Demonstration Loops/Effects/Reverb.hpp"

#include "Resources/Demonstration Loops/Audio/Filters.hpp"

#include <array>
#include <cmath>

namespace demonstration_loops
{

namespace
{

class DelayLine
{
public:
    explicit DelayLine(std::size_t frames) : samples_(std::max<std::size_t>(frames, 1)) {}

    [[nodiscard]] double read() const { return samples_[position_]; }

    void write(double sample)
    {
        samples_[position_] = sample;
        if (++position_ == samples_.size())
            position_ = 0;
    }

    [[nodiscard]] double frames() const { return static_cast<double>(samples_.size()); }

private:
    std::vector<double> samples_;
    std::size_t position_ = 0;
};

class Diffuser
{
public:
    explicit Diffuser(std::size_t frames) : line_(frames) {}

    double next(double input)
    {
        const double stored = line_.read();
        const double inner = input + 0.6 * stored;
        line_.write(inner);
        return stored - 0.6 * inner;
    }

private:
    DelayLine line_;
};

constexpr std::size_t lineCount = 8;
// Primes between 27 and 67 ms: no two lines share an echo.
constexpr std::array<std::size_t, lineCount> lineFrames = {1297, 1559, 1787, 2053,
                                                           2311, 2617, 2917, 3203};

/// Multiplies by an orthogonal matrix of eight by eight (Hadamard's).
void mixLines(std::array<double, lineCount> &v)
{
    for (std::size_t half = 1; half < lineCount; half *= 2) {
        for (std::size_t i = 0; i < lineCount; i += 2 * half) {
            for (std::size_t j = i; j < i + half; ++j) {
                const double a = v[j];
                const double b = v[j + half];
                v[j] = a + b;
                v[j + half] = a - b;
            }
        }
    }
    for (double &sample : v)
        sample *= 0.35355339059327373;
}

class Network
{
public:
    explicit Network(const Room &room)
        : preLeft_(frames(room.preDelay)), preRight_(frames(room.preDelay))
    {
        for (std::size_t i = 0; i < lineCount; ++i) {
            lines_.emplace_back(lineFrames[i]);
            walls_.emplace_back(room.damping);
            gains_[i] = std::pow(10.0, -3.0 * lines_[i].frames() / (room.decay * sampleRate));
        }
    }

    struct Frame {
        double left;
        double right;
    };

    Frame next(double left, double right)
    {
        const double earlyLeft = preLeft_.read();
        const double earlyRight = preRight_.read();
        preLeft_.write(left);
        preRight_.write(right);
        const double a = left2_.next(left1_.next(earlyLeft));
        const double b = right2_.next(right1_.next(earlyRight));
        std::array<double, lineCount> v{};
        for (std::size_t i = 0; i < lineCount; ++i)
            v[i] = gains_[i] * walls_[i].low(lines_[i].read());
        const Frame out = {v[0] - v[2] + v[4] - v[6], v[1] - v[3] + v[5] - v[7]};
        mixLines(v);
        for (std::size_t i = 0; i < lineCount; ++i)
            lines_[i].write(v[i] + (i % 2 == 0 ? a : b));
        return out;
    }

private:
    static std::size_t frames(double seconds)
    {
        return static_cast<std::size_t>(seconds * sampleRate);
    }

    DelayLine preLeft_;
    DelayLine preRight_;
    Diffuser left1_{241};
    Diffuser left2_{613};
    Diffuser right1_{263};
    Diffuser right2_{587};
    std::vector<DelayLine> lines_;
    std::vector<OnePole> walls_;
    std::array<double, lineCount> gains_{};
};

} // namespace

StereoLoop reverberate(const StereoLoop &send, const Room &room)
{
    Network network(room);
    StereoLoop result(send.frames());
    const double length = static_cast<double>(send.frames()) / sampleRate;
    // So many rounds that what is missing of the tail is 80 dB down.
    const int rounds = 1 + static_cast<int>(std::ceil(1.34 * room.decay / length));
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < send.frames(); ++i) {
            const auto out = network.next(send.left[i], send.right[i]);
            result.left[i] = out.left;
            result.right[i] = out.right;
        }
    }
    filterLoop(result, BiquadCoefficients::highPass(150.0, 0.7));
    return result;
}

StereoLoop echo(const StereoLoop &send, std::size_t frames, double feedback)
{
    DelayLine left(frames);
    DelayLine right(frames);
    OnePole leftTape(3200.0);
    OnePole rightTape(3200.0);
    StereoLoop result(send.frames());
    const double ring = static_cast<double>(frames) * 8.0 / -std::log2(feedback * feedback) * 2.0;
    const int rounds = 2 + static_cast<int>(ring / static_cast<double>(send.frames()));
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < send.frames(); ++i) {
            const double a = leftTape.low(left.read());
            const double b = rightTape.low(right.read());
            result.left[i] = a;
            result.right[i] = b;
            left.write(send.left[i] + feedback * b);
            right.write(send.right[i] * 0.3 + feedback * a);
        }
    }
    filterLoop(result, BiquadCoefficients::highPass(180.0, 0.7));
    return result;
}

} // namespace demonstration_loops
