#include "User Interface/ViewController.hpp"

#include "Audio Engine/AUEnginePlayer.hpp"
#include "Audio Engine/AUExtensionManager.hpp"
#include "Platform/Audio/AVAudioUnit.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/Description.hpp"
#include "Platform/Foundation/ElementAt.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/FileManager.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Unwrap.hpp"
#include "Platform/Interface/AUViewController.hpp"
#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"
#include "Platform/Interface/UIAlertController.hpp"
#include "Platform/Interface/UIDocumentPickerViewController.hpp"
#include "Platform/Interface/UIStoryboardSegue.hpp"
#include "Support/Extensions.hpp"
#include "User Interface/HelpViewController.hpp"

#include <utility>

namespace
{

/// The storyboard names the class.
const platform::interface::ClassRegistration<ViewController> registration;

/// Height over width of the effect's view.
constexpr CGFloat effectShape = 0.75;

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
            const auto self = std::static_pointer_cast<ViewController>(weakSelf.lock());
            if (!self) {
                print("ERROR: Self is nil !?");
                return;
            }
            if (!viewController || !viewController->view()) {
                print("ERROR: Something is wrong with the view controller and view of the audio "
                      "unit.");
                return;
            }
            self->embed(viewController);
            viewController->view()->setNeedsDisplay();
        });
}

void ViewController::embed(const std::shared_ptr<UIViewController> &viewController)
{
    addChild(viewController);
    UIView &area = unwrapImplicitly(pluginView);
    const auto view = viewController->view();
    view->setFrame(area.bounds());
    area.addSubview(view);
    pinToSuperviewEdges(*view);
    viewController->didMove(std::static_pointer_cast<UIViewController>(shared_from_this()));
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

void ViewController::prepare(UIStoryboardSegue &segue, const std::shared_ptr<UIResponder> &sender)
{
    UIViewController::prepare(segue, sender);
    if (!segue.identifier())
        return;
    const std::string &identifier = *segue.identifier();
    print(identifier);
    if (identifier != "ShowInfo" && identifier != "ShowHelp")
        return;
    const auto destination = std::dynamic_pointer_cast<HelpViewController>(segue.destination());
    if (!destination)
        fatalError("The segue '" + identifier + "' does not lead to a HelpViewController.");
    destination->prepareInfo(identifier);
}

void ViewController::embedPlugInView()
{
    const auto viewController = unwrapImplicitly(audioUnitManager).viewController;
    if (!viewController)
        fatalError("ERROR: Could not load audio unit's view controller.");
    if (viewController->view())
        embed(viewController);
}

void ViewController::centerPluginView()
{
    const CGSize size = unwrapImplicitly(view()).bounds().size;
    resetPluginView(size.width, size.height);
}

void ViewController::resetPluginView(CGFloat w, CGFloat h)
{
    if (!audioUnitViewController) {
        print("WARNING: Cannot reset the pluginview (yet).");
        return;
    }
    const CGSize screen = unwrapImplicitly(view()).bounds().size;
    UIView &area = unwrapImplicitly(pluginView);
    UIView &effect = unwrapImplicitly(audioUnitView());
    if (h <= w) {
        const CGFloat nh = w * effectShape;
        area.setFrame({0, screen.height * 0.5 - nh * 0.5, w, nh});
        effect.setFrame({0, 0, w, nh});
    } else {
        const CGFloat nw = h / effectShape;
        area.setFrame({screen.width * 0.5 - nw * 0.5, 0, nw, h});
        effect.setFrame({0, 0, nw, h});
    }
    area.setNeedsDisplay();
}

void ViewController::openFilePicker()
{
    const auto picker = std::make_shared<UIDocumentPickerViewController>(
        std::vector<std::string>{"public.folder"}, UIDocumentPickerMode::open);
    picker->delegate = std::static_pointer_cast<ViewController>(shared_from_this());
    picker->allowsMultipleSelection = false;
    present(picker, true, [] {});
}

void ViewController::documentPicker(UIDocumentPickerViewController & /*controller*/, const URL &url)
{
    print("documentPicker (didPickDocumentAt): " + url.path());
}

void ViewController::documentPicker(UIDocumentPickerViewController & /*controller*/,
                                    const std::vector<URL> &urls)
{
    print("documentPicker: " + platform::foundation::describe(urls));
    if (!urls.empty())
        print("documentPicker (didPickDocumentsAt): " + urls.front().path());
}

void ViewController::documentPickerWasCancelled(UIDocumentPickerViewController & /*controller*/)
{
    print("The document picker was canceled.");
}

void ViewController::alertMessage(const std::string &title, const std::string &message)
{
    print(title + ": " + message);
    const auto alert =
        std::make_shared<UIAlertController>(title, message, UIAlertControllerStyle::alert);
    alert->addAction(UIAlertAction("OK", UIAlertActionStyle::defaultStyle,
                                   [](UIAlertAction &) { print("Alert was confirmed."); }));
    alert->addAction(UIAlertAction("Cancel", UIAlertActionStyle::cancel,
                                   [](UIAlertAction &) { print("Alert was canceled."); }));
    present(alert, true);
}

void ViewController::getDirectories()
{
    const URL documents =
        elementAt(FileManager::defaultManager()->urls(SearchPathDirectory::documentDirectory,
                                                      SearchPathDomainMask::userDomainMask),
                  0);
    // A location without a path is no folder.
    if (documents.path().empty()) {
        print("ViewController: Documents directory is nil.");
    } else {
        documentsPath = documents.path();
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
