#include "User Interface/ViewController.hpp"

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Audio Engine/AUExtensionManager.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Unwrap.hpp"
#include "Platform/Interface/AUViewController.hpp"
#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"

#include <utility>

namespace
{

/// The storyboard names the class.
const platform::interface::ClassRegistration<ViewController> registration;

} // namespace

ViewController::ViewController(std::optional<std::string> nibName, std::shared_ptr<Bundle> bundle)
    : UIViewController(std::move(nibName), std::move(bundle))
{
}

ViewController::ViewController(NSCoder &coder) : UIViewController(coder) {}

ViewController::~ViewController() = default;

void ViewController::bindStoryboard(StoryboardBinding &binding)
{
    UIViewController::bindStoryboard(binding);
    binding.outlet("pluginView", pluginView);
    binding.outlet("buttonUnit", buttonUnit);
    binding.outlet("buttonInfo", buttonInfo);
    binding.outlet("buttonHelp", buttonHelp);
    binding.outlet("playButton", playButton);
    binding.outlet("stopButton", stopButton);
    binding.action("onButtonUnit", *this, &ViewController::onButtonUnit);
    binding.action("onPlayButton", *this, &ViewController::onPlayButton);
    binding.action("onStopButton", *this, &ViewController::onStopButton);
}

void ViewController::viewDidLoad()
{
    UIViewController::viewDidLoad();
    print("Info: Main view controller loaded.");
    unwrapImplicitly(playButton).setHidden(false);
    unwrapImplicitly(stopButton).setHidden(true);
    const auto self = std::static_pointer_cast<ViewController>(shared_from_this());
    audioUnitManager = AUExtensionManager::create(self);
    unwrapImplicitly(audioUnitManager).auEngine()->delegate.store(self);
    unwrapImplicitly(pluginView).setHidden(true);
    getDirectories();
}

void ViewController::viewWillAppear(bool animated)
{
    UIViewController::viewWillAppear(animated);
}

void ViewController::viewDidDisappear(bool animated)
{
    UIViewController::viewDidDisappear(animated);
}

void ViewController::viewDidLayoutSubviews()
{
    UIViewController::viewDidLayoutSubviews();
}

void ViewController::onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit)
{
    print("ViewController: Loading the audio unit's interface...");
    if (!unit) {
        print("ERROR: The audio unit is not initialized to load the user interface.");
        return;
    }
    const std::weak_ptr weakSelf = weak_from_this();
    unit->auAudioUnit()->requestViewController(
        [weakSelf](const std::shared_ptr<AUViewController> &viewController) {
            if (weakSelf.expired()) {
                print("ERROR: Self is nil !?");
                return;
            }
            if (!viewController || !viewController->view())
                print("ERROR: Something is wrong with the view controller and view of the audio "
                      "unit.");
        });
}

void ViewController::onEngineInitialized() {}

void ViewController::onPlayerStateChanged(bool playing)
{
    unwrapImplicitly(playButton).setHidden(playing);
    unwrapImplicitly(stopButton).setHidden(!playing);
}

void ViewController::onFileSelect(const std::string & /*file*/) {}

void ViewController::onLoop(std::int64_t /*count*/) {}

void ViewController::onButtonUnit(const std::shared_ptr<UIResponder> & /*sender*/)
{
    UIView &area = unwrapImplicitly(pluginView);
    area.setHidden(!area.isHidden());
}

void ViewController::onPlayButton(const std::shared_ptr<UIButton> & /*sender*/)
{
    unwrapImplicitly(audioUnitManager).togglePlayback();
}

void ViewController::onStopButton(const std::shared_ptr<UIButton> & /*sender*/)
{
    unwrapImplicitly(audioUnitManager).togglePlayback();
}

void ViewController::getDirectories()
{
    const auto documents = FileManager::defaultManager()->urls(
        SearchPathDirectory::documentDirectory, SearchPathDomainMask::userDomainMask);
    if (documents.empty())
        fatalError("Index out of range");
    // A location without a path is no folder.
    if (documents.front().path().empty()) {
        print("ViewController: Documents directory is nil.");
    } else {
        documentsPath = documents.front().path();
        print("ViewController: The app's documents path is: " + documentsPath);
    }

    const auto resources = Bundle::main()->resourceURL();
    if (!resources) {
        print("ViewController: Resources folder is nil.");
        return;
    }
    resourcesPath = resources->path();
    print("ViewController: The app's resources path is: " + resourcesPath);
}

std::shared_ptr<UIView> ViewController::audioUnitView() const
{
    return audioUnitViewController ? audioUnitViewController->view() : nullptr;
}
