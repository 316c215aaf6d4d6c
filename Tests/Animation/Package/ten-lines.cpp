#include <Animation/Animator.hpp>
#include <cstdio>
#include <glib.h>

int main()
{
    GMainLoop *const loop = g_main_loop_new(nullptr, FALSE);
    const auto animator = Animator::create(0, 100, 4, 0.01F, EASING_easeInOutQuad);
    animator->onAnimation = [](Animator &, float value) { std::printf("%g\n", value); };
    animator->onFinished = [loop](Animator &, float) { g_main_loop_quit(loop); };
    animator->start();
    g_main_loop_run(loop);
}
