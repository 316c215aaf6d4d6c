#include "Support/ViewHelpers.hpp"

#include "Platform/Foundation/Data.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/ProcessInfo.hpp"
#include "Platform/Foundation/URL.hpp"
#include "Platform/Foundation/URLRequest.hpp"
#include "Platform/Foundation/URLResponse.hpp"
#include "Platform/Foundation/URLSession.hpp"
#include "Platform/Interface/NSLayoutConstraint.hpp"
#include "Platform/Interface/UIImage.hpp"
#include "Platform/Interface/UIResponder.hpp"
#include "Support/DiagnosticPrinting.hpp"

#include <exception>
#include <memory>

namespace
{

std::optional<Data> read(const URL &url)
{
    try {
        return Data::contentsOf(url);
    } catch (const PlatformError &) {
        return std::nullopt;
    }
}

void loadImage(const URL &url, const std::weak_ptr<UIResponder> &weakView)
{
    const auto data = read(url);
    if (!data) {
        debugprint("UIImageView::loadFrom() : Could not encode image data.");
        return;
    }
    const auto image = UIImage::create(*data);
    const auto view = std::static_pointer_cast<UIImageView>(weakView.lock());
    if (image && view)
        view->setImage(image);
    else
        debugprint("UIImageView::loadFrom() : Could not assign image.");
}

void take(UIImageView &view, const Data &data, const std::shared_ptr<URLResponse> &response)
{
    const auto answer = std::dynamic_pointer_cast<HTTPURLResponse>(response);
    if (!answer || answer->statusCode() != 200)
        return;
    print("Fetched image successfully");
    view.setImage(UIImage::create(data));
}

void printError(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const PlatformError &fault) {
        print(fault.what());
    }
}

void requestImageFromURL(const std::shared_ptr<UIImageView> &view, const URL &url)
{
    URLSession::shared().data(URLRequest(url),
                              [view](const Data &data, const std::shared_ptr<URLResponse> &response,
                                     const std::exception_ptr &error) {
                                  if (error)
                                      printError(error);
                                  else
                                      take(*view, data, response);
                              });
}

} // namespace

std::string uniqueName(const std::optional<std::string> &prefix)
{
    const std::string name = ProcessInfo::processInfo().globallyUniqueString();
    return prefix ? *prefix + "-" + name : name;
}

void pinToSuperviewEdges(UIView &view)
{
    const auto superview = view.superview();
    if (!superview)
        return;
    view.translatesAutoresizingMaskIntoConstraints = false;
    NSLayoutConstraint::activate(
        {view.topAnchor().constraintEqualTo(superview->topAnchor()),
         view.leadingAnchor().constraintEqualTo(superview->leadingAnchor()),
         view.bottomAnchor().constraintEqualTo(superview->bottomAnchor()),
         view.trailingAnchor().constraintEqualTo(superview->trailingAnchor())});
}

void loadFrom(UIImageView &view, const std::string &urlAddress)
{
    const auto url = URL::fromString(urlAddress);
    if (!url) {
        debugprint("UIImageView::loadFrom() : Could not encode url string : " + urlAddress);
        return;
    }
    DispatchQueue::main().async(
        [url = *url, weakView = view.weak_from_this()] { loadImage(url, weakView); });
}

void getImageFromURLString(UIImageView &view, const std::string &imageURLString)
{
    const auto url = URL::fromString(imageURLString);
    if (!url)
        return;
    const auto self = std::static_pointer_cast<UIImageView>(view.shared_from_this());
    DispatchQueue::main().async([self, url = *url] { requestImageFromURL(self, url); });
}

CGFloat redValue(const UIColor &color)
{
    return CIColor(color).red();
}

CGFloat greenValue(const UIColor &color)
{
    return CIColor(color).green();
}

CGFloat blueValue(const UIColor &color)
{
    return CIColor(color).blue();
}

CGFloat alphaValue(const UIColor &color)
{
    return CIColor(color).alpha();
}
