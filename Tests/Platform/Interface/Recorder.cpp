#include "Tests/Platform/Interface/Recorder.hpp"

#include "Platform/Interface/StoryboardBinding.hpp"

void Recorder::bindStoryboard(StoryboardBinding &binding)
{
    UIViewController::bindStoryboard(binding);
    binding.outlet("first", first);
    binding.outlet("second", second);
    binding.outlet("area", area);
    binding.outlet("absent", absent);
    binding.action("onPress", *this, &Recorder::onPress);
}

void Recorder::viewDidLoad()
{
    UIViewController::viewDidLoad();
    note("viewDidLoad");
}

void Recorder::viewWillAppear(bool animated)
{
    UIViewController::viewWillAppear(animated);
    note("viewWillAppear");
}

void Recorder::viewDidAppear(bool animated)
{
    UIViewController::viewDidAppear(animated);
    note("viewDidAppear");
}

void Recorder::viewWillDisappear(bool animated)
{
    UIViewController::viewWillDisappear(animated);
    note("viewWillDisappear");
}

void Recorder::viewDidDisappear(bool animated)
{
    UIViewController::viewDidDisappear(animated);
    note("viewDidDisappear");
}

void Recorder::viewDidLayoutSubviews()
{
    UIViewController::viewDidLayoutSubviews();
    if (calls.empty() || calls.back() != "viewDidLayoutSubviews")
        note("viewDidLayoutSubviews");
}

void Recorder::onPress(const std::shared_ptr<UIButton> &sender)
{
    senders.push_back(sender);
}

void Recorder::note(const std::string &call)
{
    calls.push_back(call);
    if (onCall)
        onCall(call);
}
