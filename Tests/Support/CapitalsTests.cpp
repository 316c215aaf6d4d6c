#include "Support/Capitals.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

namespace
{

constexpr std::array<std::string_view, 197> expected{
    "Kabul",
    "Tirana",
    "Algiers",
    "Andorra la Vella",
    "Luanda",
    "St. John's",
    "Buenos Aires",
    "Yerevan",
    "Canberra",
    "Vienna",
    "Baku",
    "Nassau",
    "Manama",
    "Dhaka",
    "Bridgetown",
    "Minsk",
    "Brussels",
    "Belmopan",
    "Porto Novo",
    "Thimphu",
    "Sucre",
    "Sarajevo",
    "Gaborone",
    "Brasilia",
    "Bandar Seri Begawan",
    "Sofia",
    "Ouagadougou",
    "Bujumbura",
    "Phnom Penh",
    "Yaoundé",
    "Ottawa",
    "Praia",
    "Bangui",
    "N'Djamena",
    "Santiago",
    "Beijing",
    "Bogota",
    "Moroni",
    "San José",
    "Zagreb",
    "Havana",
    "Nicosia",
    "Prague",
    "Kinshasa",
    "Copenagen",
    "Djibouti",
    "Roseau",
    "Santo Domingo",
    "Dili",
    "Quito",
    "Cairo",
    "San Salvador",
    "Malabo",
    "Asmara",
    "Tallinn",
    "Mbabane",
    "Addis Ababa",
    "Suva",
    "Helsinki",
    "Paris",
    "Libreville",
    "Banjul",
    "Tbilisi",
    "Berlin",
    "Accra",
    "Athens",
    "St. George's",
    "Guatemala City",
    "Conakry",
    "Bissau",
    "Georgetown",
    "Port-au-Prince",
    "Tegucigalpa",
    "Budapest",
    "Reykjavík",
    "New Delhi",
    "Jakarta",
    "Tehran",
    "Baghdad",
    "Dublin",
    "Jerusalem",
    "Rome",
    "Yamoussoukro",
    "Kingston",
    "Tokyo",
    "Amman",
    "Astana",
    "Nairobi",
    "Tarawa",
    "Pyongyang",
    "Seoul",
    "Pristina",
    "Kuwait City",
    "Bishkek",
    "Vientiane",
    "Riga",
    "Beirut",
    "Maseru",
    "Monrovia",
    "Tripoli",
    "Vaduz",
    "Vilnius",
    "Luxembourg",
    "Antananarivo",
    "Lilongwe",
    "Kuala Lumpur",
    "Malé",
    "Bamako",
    "Valletta",
    "Majuro",
    "Nouakchott",
    "Port Louis",
    "Mexico City",
    "Palikir",
    "Chisinau",
    "Monaco",
    "Ulaanbaatar",
    "Podgorica",
    "Rabat",
    "Maputo",
    "Naypyidaw",
    "Windhoek",
    "Yaren",
    "Kathmandu",
    "Amsterdam",
    "Wellington",
    "Managua",
    "Niamey",
    "Abuja",
    "Skopje",
    "Oslo",
    "Muscat",
    "Islamabad",
    "Melekeok",
    "East Jerusalem",
    "Panama City",
    "Port Moresby",
    "Asunción",
    "Lima",
    "Manila",
    "Warsaw",
    "Lisbon",
    "Doha",
    "Brazzaville",
    "Bucharest",
    "Moscow",
    "Kigali",
    "Basseterre",
    "Castries",
    "Kingstown",
    "Apia",
    "San Marino",
    "São Tomé",
    "Riyadh",
    "Dakar",
    "Belgrade",
    "Victoria",
    "Freetown",
    "Singapore",
    "Bratislava",
    "Ljubljana",
    "Honiara",
    "Mogadishu",
    "Pretoria",
    "Juba",
    "Madrid",
    "Sri Jayawardenapura Kotte",
    "Khartoum",
    "Paramaribo",
    "Stockholm",
    "Bern",
    "Damascus",
    "Taipei",
    "Dushanbe",
    "Dodoma",
    "Bangkok",
    "Lomé",
    "Nukualofa",
    "Port of Spain",
    "Tunis",
    "Ankara",
    "Ashgabat",
    "Funafuti",
    "Kampala",
    "Kiev",
    "Abu Dhabi",
    "London",
    "Washington D.C.",
    "Montevideo",
    "Tashkent",
    "Port Vila",
    "Vatican City",
    "Caracas",
    "Hanoi",
    "Sana'a",
    "Lusaka",
    "Harare",
};

TEST(Capitals, AreTheseInThisOrder)
{
    ASSERT_EQ(capitals.size(), 197U);
    for (std::size_t i = 0; i < capitals.size(); ++i)
        EXPECT_EQ(capitals.at(i), expected.at(i)) << "at " << i;
}

TEST(Capitals, AreKnownToTheCompiler)
{
    static_assert(capitals.front() == "Kabul");
    static_assert(capitals.back() == "Harare");
    static_assert(capitals[44] == "Copenagen");
    static_assert(capitals[165] == "Madrid");
}

TEST(Capitals, AreUTF8)
{
    EXPECT_EQ(capitals[29], "Yaound\xC3\xA9");
    EXPECT_EQ(capitals[29].size(), 8U);
    const auto hasOthersThanASCII = [](std::string_view name) {
        return std::any_of(name.begin(), name.end(), [](char c) { return c < 0 || c > 0x7E; });
    };
    EXPECT_EQ(std::count_if(capitals.begin(), capitals.end(), hasOthersThanASCII), 7);
}

TEST(Capitals, AreAllDifferentAndHoldNoComma)
{
    const std::set<std::string_view> names(capitals.begin(), capitals.end());
    EXPECT_EQ(names.size(), capitals.size());
    EXPECT_TRUE(names.contains("Jerusalem") && names.contains("East Jerusalem"));
    for (const std::string_view name : capitals) {
        EXPECT_FALSE(name.empty());
        EXPECT_EQ(name.find(','), std::string_view::npos) << name;
    }
}

} // namespace
