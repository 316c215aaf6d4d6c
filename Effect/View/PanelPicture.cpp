#include "Effect/View/PanelPicture.hpp"

#include "Effect/View/KnobPicture.hpp"
#include "Effect/View/Layout.hpp"
#include "Effect/View/RotorPicture.hpp"

#include <cctype>
#include <cmath>
#include <string>

namespace effect::view
{

namespace
{

Colour accentOf(const Panel &panel)
{
    return panel.isEnabled() ? palette::accent : palette::asleep;
}

std::string capitals(std::string text)
{
    for (char &letter : text) {
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    return text;
}

void drawFocus(cairo_t *context, const Box &box, double radius)
{
    roundedBox(context, box.grown(-1.5), radius);
    stroke(context, palette::focus, 2);
}

void drawSwitch(cairo_t *context, const Panel &panel)
{
    const Box &box = layout::controls[enabledControl];
    const Box pill = box.grown(-4);
    const double radius = pill.height / 2;
    roundedBox(context, pill, radius);
    fill(context, rgb(panel.isHovered(enabledControl) ? 0x2E333B : 0x23272D));
    const Point light{pill.x + radius + 1, pill.centre().y};
    if (panel.isEnabled()) {
        circle(context, light, 7);
        fill(context, palette::accent.faded(0.22));
    }
    circle(context, light, 4);
    fill(context, panel.isEnabled() ? palette::accent : palette::mark);
    drawText(context, {pill.centre().x + 8, pill.centre().y + 4}, Align::centre, {12, true},
             panel.isEnabled() ? palette::text : palette::name,
             textOf(enabledControl, panel.value(enabledControl)));
    if (panel.showsFocus(enabledControl)) {
        drawFocus(context, box, box.height / 2 - 1.5);
    }
}

KnobState knobState(const Panel &panel, std::size_t control)
{
    return {positionOf(control, panel.value(control)),
            positionOf(control, parameters.at(control).origin),
            positionOf(control, controlRanges.at(control).standard),
            panel.isHovered(control) || panel.isHeld(control), accentOf(panel)};
}

void drawSpeedMarks(cairo_t *context, const Panel &panel)
{
    for (const layout::SpeedMark &mark : layout::speedMarks) {
        const bool isSet = std::abs(panel.value(speedControl) - mark.value) < 0.005F;
        const Point middle = mark.box.centre();
        drawText(context, {middle.x, middle.y + 4}, Align::centre, {11, true, 1.2},
                 isSet ? accentOf(panel) : palette::name, mark.label);
    }
}

} // namespace

void drawGround(cairo_t *context)
{
    const Pattern ground(cairo_pattern_create_linear(0, 0, 0, layout::height));
    addStop(ground, 0, palette::backgroundTop);
    addStop(ground, 1, palette::background);
    cairo_rectangle(context, 0, 0, layout::width, layout::height);
    fill(context, ground);
    cairo_rectangle(context, 0, 0, layout::width, layout::headerHeight);
    fill(context, palette::header);
    cairo_rectangle(context, 0, layout::headerHeight, layout::width, 1);
    fill(context, palette::line);
    cairo_rectangle(context, 28, layout::dividerHeight, layout::width - 56, 1);
    fill(context, palette::line);
    drawText(context, {28, 32}, Align::left, {18, true, 4}, palette::text, "PARVANE");
    drawText(context, {164, 31}, Align::left, {12, false, 0.4}, palette::name, "Rotary cabinet");
    drawRotorWell(context, layout::horn);
    drawRotorWell(context, layout::drum);
}

void drawControl(cairo_t *context, const Panel &panel, std::size_t control)
{
    if (control == enabledControl) {
        drawSwitch(context, panel);
        return;
    }
    const Box &box = layout::controls.at(control);
    const layout::Knob knob = layout::knobOf(control);
    drawKnob(context, knob, knobState(panel, control));
    const bool isLarge = control == speedControl;
    const double middle = knob.axle.x;
    const bool isLively = panel.isHovered(control) || panel.isHeld(control);
    drawText(context, {middle, isLarge ? 246 : box.y + 15}, Align::centre, {11, true, 1.2},
             isLively ? palette::text : palette::name, capitals(parameters.at(control).label));
    drawText(context, {middle, isLarge ? 268.0 : box.y + 95}, Align::centre,
             {isLarge ? 17.0 : 13.0}, palette::text, textOf(control, panel.value(control)));
    if (isLarge) {
        drawSpeedMarks(context, panel);
    }
    if (panel.showsFocus(control)) {
        drawFocus(context, box, 8);
    }
}

void drawHorn(cairo_t *context, const Panel &panel, const RotorMotion &motion)
{
    drawRotor(context, layout::horn, RotorKind::horn,
              {motion.angle(), motion.speed(), panel.value(spreadControl), accentOf(panel)});
}

void drawDrum(cairo_t *context, const Panel &panel, const RotorMotion &motion)
{
    drawRotor(context, layout::drum, RotorKind::drum,
              {motion.angle(), motion.speed(), panel.value(spreadControl), accentOf(panel)});
}

} // namespace effect::view
