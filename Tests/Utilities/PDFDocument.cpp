#include "Tests/Utilities/PDFDocument.hpp"

#include <cstdio>
#include <vector>

namespace test
{

std::string pdfDocument(const std::string &text)
{
    const std::string content = "BT /F1 48 Tf 60 700 Td (" + text + ") Tj ET";
    const std::vector<std::string> objects{
        "<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
        "<</Type/Page/Parent 2 0 R/MediaBox[0 0 595 842]/Contents 4 0 R"
        "/Resources<</Font<</F1 5 0 R>>>>>>",
        "<</Length " + std::to_string(content.size()) + ">>stream\n" + content + "\nendstream",
        "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"};
    std::string document = "%PDF-1.4\n";
    std::string table = "0000000000 65535 f \n";
    for (std::size_t index = 0; index < objects.size(); ++index) {
        char entry[24];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", document.size());
        table += entry;
        document += std::to_string(index + 1) + " 0 obj\n" + objects[index] + "\nendobj\n";
    }
    const std::string count = std::to_string(objects.size() + 1);
    return document + "xref\n0 " + count + "\n" + table + "trailer<</Size " + count +
           "/Root 1 0 R>>\nstartxref\n" + std::to_string(document.size()) + "\n%%EOF\n";
}

} // namespace test
