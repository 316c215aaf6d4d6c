#include "Effect/View/View.hpp"

#include "Effect/View/ErrorTrap.hpp"
#include "Effect/View/Layout.hpp"
#include "Effect/View/PanelPicture.hpp"

#include <chrono>
#include <cmath>

namespace effect::view
{

namespace
{

PixelSize sizeAt(float scale)
{
    return {static_cast<int>(std::lround(layout::width * scale)),
            static_cast<int>(std::lround(layout::height * scale))};
}

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

View::View(const Host &host)
    : host_(host), panel_(host_), window_(host.parent(), sizeAt(host.scale())),
      fit_(window_.size()), canvas_(window_.size())
{
    host_.announceSize(window_.size().width, window_.size().height);
}

void View::receive(std::uint32_t port, float value)
{
    if (const auto control = controlOf(port)) {
        panel_.setValue(*control, value);
        return;
    }
    switch (static_cast<Port>(port)) {
    case Port::hornAngle:
        horn_.reportAngle(value, secondsNow());
        break;
    case Port::hornSpeed:
        horn_.reportSpeed(value);
        break;
    case Port::drumAngle:
        drum_.reportAngle(value, secondsNow());
        break;
    case Port::drumSpeed:
        drum_.reportSpeed(value);
        break;
    default:
        break;
    }
}

void View::resize(PixelSize size)
{
    window_.resize(size);
}

bool View::idle()
{
    if (!window_.dispatch(*this)) {
        return false;
    }
    draw(secondsNow());
    return true;
}

void View::resized(PixelSize size)
{
    fit_ = Fit(size);
    isOutgrown_ = true;
}

void View::exposed()
{
    isExposed_ = true;
}

void View::pressed(int x, int y, std::uint32_t milliseconds)
{
    panel_.press(fit_.pointAt(x, y), milliseconds);
}

void View::moved(int x, int y, bool fine)
{
    panel_.move(fit_.pointAt(x, y), fine);
}

void View::released()
{
    panel_.release();
}

void View::left()
{
    panel_.leave();
}

void View::scrolled(int x, int y, int notches, bool fine)
{
    panel_.scroll(fit_.pointAt(x, y), notches, fine);
}

void View::pressed(Key key, bool fine)
{
    panel_.press(key, fine);
}

void View::keyboardOwned(bool owned)
{
    panel_.setKeyboard(owned);
}

void View::draw(double now)
{
    if (isOutgrown_) {
        canvas_ = Canvas(window_.size());
    }
    const bool all = isOutgrown_ || isStale_;
    auto changes = panel_.takeChanges();
    // All accents sleep while the effect is bypassed.
    const bool allControls = all || changes.test(enabledControl);
    const bool allRotors = allControls || changes.test(spreadControl);
    for (std::size_t control = 0; control < controlCount; ++control) {
        if (allControls || changes.test(control)) {
            repaint(layout::controls.at(control),
                    [this, control](cairo_t *context) { drawControl(context, panel_, control); });
        }
    }
    drawRotors(now, allRotors);
    if (all || isExposed_) {
        window_.show(canvas_.surface(), {0, 0, window_.size().width, window_.size().height});
    }
    isOutgrown_ = false;
    isStale_ = false;
    isExposed_ = false;
}

void View::drawRotors(double now, bool all)
{
    if (horn_.advance(now) || all) {
        repaint(layout::horn, [this](cairo_t *context) { drawHorn(context, panel_, horn_); });
    }
    if (drum_.advance(now) || all) {
        repaint(layout::drum, [this](cairo_t *context) { drawDrum(context, panel_, drum_); });
    }
}

template <typename Paint>
void View::repaint(const Box &box, Paint paint)
{
    canvas_.repaint(box, paint);
    window_.show(canvas_.surface(), fit_.pixelsOf(box));
}

} // namespace effect::view
