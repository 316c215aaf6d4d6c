#pragma once

#include "Audio Engine/AUEnginePlayerDelegate.hpp"
#include "Audio Engine/AUExtensionManagerDelegate.hpp"
#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/UIViewController.hpp"

#include <cstdint>
#include <memory>
#include <string>

class AUExtensionManager;
class AVAudioUnit;

/// The main screen: starts and stops the demonstration and shows the effect's
/// own view. It owns the audio unit locator, which finds the effect, and is told
/// by it and by its engine player what happens. Main thread, where nothing else
/// is said.
class ViewController : public UIViewController,
                       public AUExtensionManagerDelegate,
                       public AUEnginePlayerDelegate
{
public:
    ViewController(std::optional<std::string> nibName, std::shared_ptr<Bundle> bundle);
    explicit ViewController(NSCoder &coder);
    ~ViewController() override;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;

    /// Asks the effect for its view. On the thread that instantiated the effect.
    void onFoundComponent(const std::shared_ptr<AVAudioUnit> &unit) override;
    /// On the thread that instantiated the effect.
    void onEngineInitialized() override;

    /// Keeps exactly one of Play and Stop visible.
    void onPlayerStateChanged(bool playing) override;
    void onFileSelect(const std::string &file) override;
    void onLoop(std::int64_t count) override;

private:
    std::shared_ptr<AUExtensionManager> audioUnitManager;

public:
    /// The area for the effect's view; hidden until the person asks for it.
    std::shared_ptr<UIView> pluginView;
    /// Shows and hides the effect's view.
    std::shared_ptr<UIButton> buttonUnit;
    std::shared_ptr<UIButton> buttonInfo;
    std::shared_ptr<UIButton> buttonHelp;
    std::shared_ptr<UIButton> playButton;
    std::shared_ptr<UIButton> stopButton;

    virtual void onButtonUnit(const std::shared_ptr<UIResponder> &sender);
    /// Both buttons toggle: the visible one is kept right by the player's state.
    virtual void onPlayButton(const std::shared_ptr<UIButton> &sender);
    virtual void onStopButton(const std::shared_ptr<UIButton> &sender);

protected:
    void bindStoryboard(StoryboardBinding &binding) override;

private:
    /// Finds the folders of the user's documents and of the program's resources.
    virtual void getDirectories();
    virtual std::shared_ptr<UIView> audioUnitView() const;

    std::string documentsPath;
    std::string sharedPath;
    std::string resourcesPath;
    std::shared_ptr<UIViewController> audioUnitViewController;
    std::shared_ptr<AVAudioUnit> avAudioUnit;
};
