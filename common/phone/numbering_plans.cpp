#include "common/phone/numbering_plans.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace phone {
namespace {

using Plan = NumberingPlan;

// clang-format off
constexpr std::array kPlans = {
    Plan{"AC", "247", "", ""}, Plan{"AD", "376", "", ""}, Plan{"AE", "971", "", "0"},
    Plan{"AF", "93", "", "0"}, Plan{"AG", "1", "011", "1", 10, 10},
    Plan{"AI", "1", "011", "1", 10, 10}, Plan{"AL", "355", "", "0"}, Plan{"AM", "374", "", "0"},
    Plan{"AO", "244", "", ""}, Plan{"AQ", "672", "", ""}, Plan{"AR", "54", "", "0"},
    Plan{"AS", "1", "011", "1", 10, 10}, Plan{"AT", "43", "", "0"}, Plan{"AU", "61", "0011", "0"},
    Plan{"AW", "297", "", ""}, Plan{"AX", "358", "", "0"}, Plan{"AZ", "994", "", "0", 9, 9},
    Plan{"BA", "387", "", "0"}, Plan{"BB", "1", "011", "1", 10, 10}, Plan{"BD", "880", "", "0"},
    Plan{"BE", "32", "", "0"}, Plan{"BF", "226", "", ""}, Plan{"BG", "359", "", "0"},
    Plan{"BH", "973", "", ""}, Plan{"BI", "257", "", ""}, Plan{"BJ", "229", "", ""},
    Plan{"BL", "590", "", "0"}, Plan{"BM", "1", "011", "1", 10, 10}, Plan{"BN", "673", "", ""},
    Plan{"BO", "591", "", "0"}, Plan{"BQ", "599", "", ""}, Plan{"BR", "55", "", "0", 10, 11},
    Plan{"BS", "1", "011", "1", 10, 10}, Plan{"BT", "975", "", ""}, Plan{"BW", "267", "", ""},
    Plan{"BY", "375", "810", "80 8", 9, 9}, Plan{"BZ", "501", "", ""},
    Plan{"CA", "1", "011", "1", 10, 10}, Plan{"CC", "61", "0011", "0"}, Plan{"CD", "243", "", "0"},
    Plan{"CF", "236", "", ""}, Plan{"CG", "242", "", ""}, Plan{"CH", "41", "", "0"},
    Plan{"CI", "225", "", ""}, Plan{"CK", "682", "", ""}, Plan{"CL", "56", "", ""},
    Plan{"CM", "237", "", ""}, Plan{"CN", "86", "", "0", 11, 11}, Plan{"CO", "57", "", ""},
    Plan{"CR", "506", "", ""}, Plan{"CU", "53", "119", "0"}, Plan{"CV", "238", "", ""},
    Plan{"CW", "599", "", ""}, Plan{"CX", "61", "0011", "0"}, Plan{"CY", "357", "", ""},
    Plan{"CZ", "420", "", ""}, Plan{"DE", "49", "", "0"}, Plan{"DJ", "253", "", ""},
    Plan{"DK", "45", "", ""}, Plan{"DM", "1", "011", "1", 10, 10},
    Plan{"DO", "1", "011", "1", 10, 10}, Plan{"DZ", "213", "", "0"}, Plan{"EC", "593", "", "0"},
    Plan{"EE", "372", "", ""}, Plan{"EG", "20", "", "0"}, Plan{"EH", "212", "", "0"},
    Plan{"ER", "291", "", "0"}, Plan{"ES", "34", "", ""}, Plan{"ET", "251", "", "0"},
    Plan{"FI", "358", "", "0"}, Plan{"FJ", "679", "", ""}, Plan{"FK", "500", "", ""},
    Plan{"FM", "691", "011", "1", 7, 7}, Plan{"FO", "298", "", ""}, Plan{"FR", "33", "", "0"},
    Plan{"GA", "241", "", "0"}, Plan{"GB", "44", "", "0"}, Plan{"GD", "1", "011", "1", 10, 10},
    Plan{"GE", "995", "", "0", 9, 9}, Plan{"GF", "594", "", "0"}, Plan{"GG", "44", "", "0"},
    Plan{"GH", "233", "", "0"}, Plan{"GI", "350", "", ""}, Plan{"GL", "299", "", ""},
    Plan{"GM", "220", "", ""}, Plan{"GN", "224", "", ""}, Plan{"GP", "590", "", "0"},
    Plan{"GQ", "240", "", ""}, Plan{"GR", "30", "", ""}, Plan{"GT", "502", "", ""},
    Plan{"GU", "1", "011", "1", 10, 10}, Plan{"GW", "245", "", ""}, Plan{"GY", "592", "001", ""},
    Plan{"HK", "852", "001", ""}, Plan{"HN", "504", "", ""}, Plan{"HR", "385", "", "0"},
    Plan{"HT", "509", "", ""}, Plan{"HU", "36", "", "06", 8, 9},
    Plan{"ID", "62", "001 007 008", "0"}, Plan{"IE", "353", "", "0"},
    Plan{"IL", "972", "012 013 014", "0"}, Plan{"IM", "44", "", "0"},
    Plan{"IN", "91", "", "0", 10, 10}, Plan{"IO", "246", "", ""}, Plan{"IQ", "964", "", "0"},
    Plan{"IR", "98", "", "0", 10, 10}, Plan{"IS", "354", "", ""}, Plan{"IT", "39", "", ""},
    Plan{"JE", "44", "", "0"}, Plan{"JM", "1", "011", "1", 10, 10}, Plan{"JO", "962", "", "0"},
    Plan{"JP", "81", "010", "0"}, Plan{"KE", "254", "000", "0"}, Plan{"KG", "996", "", "0", 9, 9},
    Plan{"KH", "855", "001", "0"}, Plan{"KI", "686", "", ""}, Plan{"KM", "269", "", ""},
    Plan{"KN", "1", "011", "1", 10, 10}, Plan{"KR", "82", "001 002", "0"},
    Plan{"KW", "965", "", ""}, Plan{"KY", "1", "011", "1", 10, 10},
    Plan{"KZ", "7", "810", "8", 10, 10}, Plan{"LA", "856", "", "0"}, Plan{"LB", "961", "", "0"},
    Plan{"LC", "1", "011", "1", 10, 10}, Plan{"LI", "423", "", ""}, Plan{"LK", "94", "", "0"},
    Plan{"LR", "231", "", "0"}, Plan{"LS", "266", "", ""}, Plan{"LT", "370", "", "8 0", 8, 8},
    Plan{"LU", "352", "", ""}, Plan{"LV", "371", "", ""}, Plan{"LY", "218", "", "0"},
    Plan{"MA", "212", "", "0"}, Plan{"MC", "377", "", ""}, Plan{"MD", "373", "", "0"},
    Plan{"ME", "382", "", "0"}, Plan{"MF", "590", "", "0"}, Plan{"MG", "261", "", "0"},
    Plan{"MH", "692", "011", "1", 7, 7}, Plan{"MK", "389", "", "0"}, Plan{"ML", "223", "", ""},
    Plan{"MM", "95", "", "0"}, Plan{"MN", "976", "001", "0"}, Plan{"MO", "853", "", ""},
    Plan{"MP", "1", "011", "1", 10, 10}, Plan{"MQ", "596", "", "0"}, Plan{"MR", "222", "", ""},
    Plan{"MS", "1", "011", "1", 10, 10}, Plan{"MT", "356", "", ""}, Plan{"MU", "230", "", ""},
    Plan{"MV", "960", "", ""}, Plan{"MW", "265", "", "0"},
    Plan{"MX", "52", "", "01 044 045", 10, 10}, Plan{"MY", "60", "", "0"},
    Plan{"MZ", "258", "", ""}, Plan{"NA", "264", "", "0"}, Plan{"NC", "687", "", ""},
    Plan{"NE", "227", "", ""}, Plan{"NF", "672", "", ""}, Plan{"NG", "234", "009", "0"},
    Plan{"NI", "505", "", ""}, Plan{"NL", "31", "", "0"}, Plan{"NO", "47", "", ""},
    Plan{"NP", "977", "", "0"}, Plan{"NR", "674", "", ""}, Plan{"NU", "683", "", ""},
    Plan{"NZ", "64", "", "0"}, Plan{"OM", "968", "", ""}, Plan{"PA", "507", "", ""},
    Plan{"PE", "51", "", "0"}, Plan{"PF", "689", "", ""}, Plan{"PG", "675", "", ""},
    Plan{"PH", "63", "", "0", 10, 10}, Plan{"PK", "92", "", "0", 10, 10},
    Plan{"PL", "48", "", "0", 9, 9}, Plan{"PM", "508", "", "0"},
    Plan{"PR", "1", "011", "1", 10, 10}, Plan{"PS", "970", "", "0"}, Plan{"PT", "351", "", ""},
    Plan{"PW", "680", "011", ""}, Plan{"PY", "595", "", "0"}, Plan{"QA", "974", "", ""},
    Plan{"RE", "262", "", "0"}, Plan{"RO", "40", "", "0"}, Plan{"RS", "381", "", "0"},
    Plan{"RU", "7", "810", "8", 10, 10}, Plan{"RW", "250", "", "0"}, Plan{"SA", "966", "", "0"},
    Plan{"SB", "677", "", ""}, Plan{"SC", "248", "", ""}, Plan{"SD", "249", "", "0"},
    Plan{"SE", "46", "", "0"}, Plan{"SG", "65", "000 001 002 008", ""}, Plan{"SH", "290", "", ""},
    Plan{"SI", "386", "", "0"}, Plan{"SJ", "47", "", ""}, Plan{"SK", "421", "", "0"},
    Plan{"SL", "232", "", "0"}, Plan{"SM", "378", "", ""}, Plan{"SN", "221", "", ""},
    Plan{"SO", "252", "", "0"}, Plan{"SR", "597", "", ""}, Plan{"SS", "211", "", "0"},
    Plan{"ST", "239", "", ""}, Plan{"SV", "503", "", ""}, Plan{"SX", "1", "011", "1", 10, 10},
    Plan{"SY", "963", "", "0"}, Plan{"SZ", "268", "", ""}, Plan{"TA", "290", "", ""},
    Plan{"TC", "1", "011", "1", 10, 10}, Plan{"TD", "235", "", ""}, Plan{"TG", "228", "", ""},
    Plan{"TH", "66", "001 007 008 009", "0"}, Plan{"TJ", "992", "810", "8", 9, 9},
    Plan{"TK", "690", "", ""}, Plan{"TL", "670", "", ""}, Plan{"TM", "993", "810", "8", 8, 8},
    Plan{"TN", "216", "", ""}, Plan{"TO", "676", "", ""}, Plan{"TR", "90", "", "0", 10, 10},
    Plan{"TT", "1", "011", "1", 10, 10}, Plan{"TV", "688", "", ""}, Plan{"TW", "886", "002", "0"},
    Plan{"TZ", "255", "000", "0"}, Plan{"UA", "380", "", "0", 9, 9}, Plan{"UG", "256", "000", "0"},
    Plan{"US", "1", "011", "1", 10, 10}, Plan{"UY", "598", "", "0"},
    Plan{"UZ", "998", "810", "8", 9, 9}, Plan{"VA", "39", "", ""},
    Plan{"VC", "1", "011", "1", 10, 10}, Plan{"VE", "58", "", "0"},
    Plan{"VG", "1", "011", "1", 10, 10}, Plan{"VI", "1", "011", "1", 10, 10},
    Plan{"VN", "84", "", "0"}, Plan{"VU", "678", "", ""}, Plan{"WF", "681", "", ""},
    Plan{"WS", "685", "", ""}, Plan{"XK", "383", "", "0"}, Plan{"YE", "967", "", "0"},
    Plan{"YT", "262", "", "0"}, Plan{"ZA", "27", "", "0"}, Plan{"ZM", "260", "", "0"},
    Plan{"ZW", "263", "", "0"},
};
// clang-format on
static_assert(kPlans.size() == 245);
static_assert(std::ranges::is_sorted(kPlans, {}, &Plan::country));

constexpr std::size_t kLongestCode = 3;

}  // namespace

const NumberingPlan* FindPlanOf(std::string_view country) {
  const auto* plan = std::ranges::lower_bound(kPlans, country, {}, &Plan::country);
  return plan != kPlans.end() && plan->country == country ? plan : nullptr;
}

const NumberingPlan* FindPlanByCode(std::string_view digits) {
  static const auto byCode = [] {
    std::unordered_map<std::string_view, const Plan*> map;
    for (const Plan& plan : kPlans) map.emplace(plan.code, &plan);
    return map;
  }();
  for (std::size_t length = 1; length <= std::min(kLongestCode, digits.size()); ++length) {
    const auto found = byCode.find(digits.substr(0, length));
    if (found != byCode.end()) return found->second;
  }
  return nullptr;
}

}  // namespace phone
