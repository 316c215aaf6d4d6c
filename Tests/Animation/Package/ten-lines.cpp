#include <Animation/Animator.hpp>
#include <cstdio>
#include <glib.h>

int main()
{
    const auto animator = Animator::create(0, 100, 4, 0.01F, EASING_easeInOutQuad);
    animator->onAnimation = [](Animator &, float value) { std::printf("%g\n", value); };
    animator->start();
    while (!animator->isFinished())
        g_main_context_iteration(nullptr, TRUE);
}
