#pragma once

#include "Audio Engine/AUEnginePlayerDelegate.hpp"
#include "Audio Engine/AUExtensionManagerDelegate.hpp"
#include "Platform/Interface/CGGeometry.hpp"
#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/UIDocumentPickerDelegate.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/UIViewController.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class AUExtensionManager;
class AVAudioUnit;

/// The main screen: starts and stops the demonstration and shows the effect's
/// own view. It owns the audio unit locator, which finds the effect, and is told
/// by it and by its engine player what happens. Main thread, where nothing else
/// is said.
class ViewController : public UIViewController,
                       public AUExtensionManagerDelegate,
                       public AUEnginePlayerDelegate,
                       public UIDocumentPickerDelegate
{
public:
    ViewController(std::optional<std::string> nibName, std::shared_ptr<Bundle> bundle);
    explicit ViewController(NSCoder &coder);
    ~ViewController() override;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;
    /// Tells the help screen what to show.
    void prepare(UIStoryboardSegue &segue, const std::shared_ptr<UIResponder> &sender) override;

    /// Asks the effect for its view and fills `pluginView` with it. On the thread that
    /// instantiated the effect; the view comes on the main thread.
    void onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit) override;
    /// On the thread that instantiated the effect.
    void onEngineInitialized() override;

    /// Keeps exactly one of Play and Stop visible.
    void onPlayerStateChanged(bool playing) override;
    void onFileSelect(const std::string &file) override;
    void onLoop(std::int64_t count) override;

protected:
    std::shared_ptr<AUExtensionManager> audioUnitManager;

public:
    /// The area for the effect's view; hidden until the person asks for it.
    std::shared_ptr<UIView> pluginView;
    /// Shows and hides the effect's view.
    std::shared_ptr<UIButton> buttonUnit;
    /// Leads to the maker's web site.
    std::shared_ptr<UIButton> buttonInfo;
    /// Leads to the manual.
    std::shared_ptr<UIButton> buttonHelp;
    std::shared_ptr<UIButton> playButton;
    std::shared_ptr<UIButton> stopButton;

    virtual void onButtonUnit(const std::shared_ptr<UIResponder> &sender);
    /// Both buttons toggle: the visible one is kept right by the player's state.
    virtual void onPlayButton(const std::shared_ptr<UIButton> &sender);
    virtual void onStopButton(const std::shared_ptr<UIButton> &sender);

    /// Fits the effect's view to this screen; see `resetPluginView`.
    virtual void centerPluginView();

    /// Asks for a folder; the answer comes to the three operations below.
    void openFilePicker();
    void documentPicker(UIDocumentPickerViewController &controller, const URL &url) override;
    void documentPicker(UIDocumentPickerViewController &controller,
                        const std::vector<URL> &urls) override;
    void documentPickerWasCancelled(UIDocumentPickerViewController &controller) override;

    /// Shows a message with the choice of OK and Cancel, and prints both.
    void alertMessage(const std::string &title, const std::string &message);

protected:
    void bindStoryboard(StoryboardBinding &binding) override;

    /// Fills `pluginView` with the view of the locator's view controller, whose
    /// absence is a fatal error.
    virtual void embedPlugInView();
    /// Gives the effect's view the shape of 4 to 3 and centres `pluginView`, for `w`
    /// by `h` points: as wide as that in landscape, as high in portrait, where it may
    /// reach beyond both sides of the screen.
    virtual void resetPluginView(CGFloat w, CGFloat h);
    /// Finds the folders of the user's documents and of the program's resources.
    virtual void getDirectories();
    virtual std::shared_ptr<UIView> audioUnitView() const;

private:
    void embed(const std::shared_ptr<UIViewController> &viewController);

    std::string documentsPath;
    std::string sharedPath;
    std::string resourcesPath;

protected:
    /// What the layout works on; nothing here sets it.
    std::shared_ptr<UIViewController> audioUnitViewController;

private:
    std::shared_ptr<AVAudioUnit> avAudioUnit;
};
