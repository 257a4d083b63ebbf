// Twice the input is at most a little more than twice the work, for each shape of input that a
// reader could be slowed down with. Work is counted in instructions.
#include <gtest/gtest.h>

#include <algorithm>
#include <concepts>
#include <functional>
#include <string>
#include <string_view>

#include "tests/support/paths.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/wire/process.h"

namespace {

using corvane::testing::Process;
using corvane::testing::ProgramPath;
using corvane::testing::TemporaryDirectory;

std::string Number(int n) {
  return std::to_string(n);
}

// `item(0)` to `item(n - 1)` between head and tail.
template <std::invocable<int> Item>
std::string Repeat(int n, std::string head, Item item, std::string_view tail) {
  for (int i = 0; i < n; ++i) head += item(i);
  return head += tail;
}

std::string Repeat(int n, std::string_view head, std::string_view item, std::string_view tail) {
  return Repeat(
      n, std::string(head), [&](int) { return item; }, tail);
}

template <typename Line>
std::string Card(int n, Line line) {
  return Repeat(n, "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Berg;Anna\r\n", line, "END:VCARD\r\n");
}

std::string Day(int i, std::string_view dash = "") {
  const auto two = [](int number) { return Number(100 + number).substr(1); };
  return Number(2001 + i / 336) + std::string(dash) + two(i / 28 % 12 + 1) + std::string(dash) +
         two(i % 28 + 1);
}

std::string Series(int n, std::function<std::string(int)> line, std::string_view behind) {
  return Repeat(n,
                "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:x\r\nBEGIN:VEVENT\r\nUID:a\r\n"
                "DTSTART;TZID=Europe/Berlin:20010101T100000\r\n"
                "DTEND;TZID=Europe/Berlin:20010101T110000\r\nRRULE:FREQ=DAILY\r\n",
                std::move(line), behind);
}

std::string Uploaded(int n, std::string_view kind, std::function<std::string(int)> child) {
  const std::string name(kind);
  return Repeat(n, "<A><" + name + "><SUBJECT>s</SUBJECT>", std::move(child),
                "</" + name + "></A>");
}

std::string Field(const std::string& octal) {
  std::string field = octal;
  field.resize(12, '\0');
  return field;
}

// A member of an archive, by the header that POSIX describes.
std::string Member(const std::string& name) {
  std::string header = name;
  header.resize(100, '\0');
  header += std::string("0000600\0000000000\0000000000\0", 24) + Field("00000000000") +
            Field("00000000000") + "        0";
  header.resize(257, '\0');
  header += std::string("ustar\00000", 8);
  header.resize(512, '\0');
  unsigned sum = 0;
  for (const char c : header) sum += static_cast<unsigned char>(c);
  std::string octal = "000000";
  for (std::size_t i = 6; i-- > 0; sum /= 8) octal[i] = static_cast<char>('0' + sum % 8);
  return header.replace(148, 8, octal + std::string("\0 ", 2));
}

struct Shape {
  const char* name;
  const char* target;
  int size;
  std::function<std::string(int)> input;
};

const Shape kShapes[] = {
    {"VCardCategories", "vcard", 1000,
     [](int n) {
       return Card(1, [&](int) {
         return Repeat(
             n, "CATEGORIES:a", [](int i) { return ",c" + Number(i); }, "\r\n");
       });
     }},
    {"VCardCategoryLines", "vcard", 500,
     [](int n) { return Card(n, [](int i) { return "CATEGORIES: c" + Number(i) + "\r\n"; }); }},
    {"VCardNumbers", "vcard", 500,
     [](int n) { return Card(n, [](int i) { return "TEL;TYPE=HOME:" + Number(i) + "\r\n"; }); }},
    {"VCardLabels", "vcard", 300,
     [](int n) {
       return Card(n, [](int i) {
         return "i" + Number(i) + ".TEL:1\r\ni" + Number(i) + ".X-ABLabel:l\r\n";
       });
     }},
    {"VCardParameters", "vcard", 1000,
     [](int n) {
       return Card(1, [&](int) {
         return Repeat(
             n, "TEL", [](int i) { return ";TYPE=t" + Number(i); }, ":1\r\n");
       });
     }},
    {"VCardFolds", "vcard", 2000,
     [](int n) { return Card(1, [&](int) { return Repeat(n, "NOTE:a", "\r\n b", "\r\n"); }); }},
    {"VCardLineBreaks", "vcard", 2000,
     [](int n) {
       return Card(1, [&](int) { return Repeat(n, "NOTE;X-LINE-BREAKS=crlf:a", "\\n", "\r\n"); });
     }},
    {"VCardNesting", "vcard", 1000,
     [](int n) { return Card(n, [](int) { return "AGENT:\r\nBEGIN:VCARD\r\n"; }); }},
    {"VCards", "vcard", 60,
     [](int n) {
       return Repeat(n, "", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:a;b\r\nEND:VCARD\r\n", "");
     }},
    {"ICalendarExcludedDays", "icalendar", 400,
     [](int n) {
       return Series(
           n, [](int i) { return "EXDATE;TZID=Europe/Berlin:" + Day(i) + "T100000\r\n"; },
           "END:VEVENT\r\nEND:VCALENDAR\r\n");
     }},
    {"ICalendarChangedDays", "icalendar", 150,
     [](int n) {
       return Series(
           n,
           [](int i) {
             return "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:a\r\nRECURRENCE-ID;TZID=Europe/Berlin:" +
                    Day(i) + "T100000\r\nDTSTART;TZID=Europe/Berlin:" + Day(i) +
                    "T120000\r\nSUMMARY:x\r\n";
           },
           "END:VEVENT\r\nEND:VCALENDAR\r\n");
     }},
    {"ICalendarAddedDays", "icalendar", 200,
     [](int n) {
       return Repeat(
           n,
           "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:x\r\nBEGIN:VEVENT\r\nUID:a\r\n"
           "DTSTART:20010101T100000\r\n",
           [](int i) { return "RDATE:" + Day(i) + "T130000\r\n"; },
           "END:VEVENT\r\nEND:VCALENDAR\r\n");
     }},
    {"ICalendarNesting", "icalendar", 2000,
     [](int n) { return Repeat(n, "BEGIN:VCALENDAR\r\n", "BEGIN:X\r\n", ""); }},
    {"ICalendarZones", "icalendar", 100,
     [](int n) {
       return Repeat(
           n, "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n",
           [](int i) {
             return "BEGIN:VTIMEZONE\r\nTZID:z" + Number(i) +
                    "\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0100\r\n"
                    "TZOFFSETTO:+0100\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\nBEGIN:VEVENT\r\nUID:u" +
                    Number(i) + "\r\nDTSTART;TZID=z" + Number(i) +
                    ":20010101T100000\r\nEND:VEVENT\r\n";
           },
           "END:VCALENDAR\r\n");
     }},
    {"BackupMessages", "sms_backup", 100,
     [](int n) {
       return Repeat(
           n, "<smses>",
           [](int i) {
             return "<sms address=\"+1\" date=\"" + Number(i) + "000\" type=\"1\" body=\"b\"/>";
           },
           "</smses>");
     }},
    {"BackupAttributes", "sms_backup", 1000,
     [](int n) {
       return Repeat(
           n, "<smses><sms address=\"+1\" date=\"0\" type=\"1\" body=\"b\"",
           [](int i) { return " a" + Number(i) + "=\"1\""; }, "/></smses>");
     }},
    {"BackupParts", "sms_backup", 400,
     [](int n) {
       return Repeat(n, "<smses><mms date=\"0\" msg_box=\"1\"><parts>",
                     "<part ct=\"text/plain\" text=\"a\"/>", "</parts></mms></smses>");
     }},
    {"BackupReferences", "sms_backup", 3000,
     [](int n) {
       return Repeat(n, "<smses><sms address=\"+1\" date=\"0\" type=\"1\" body=\"",
                     "&#55357;&#56832;", "\"/></smses>");
     }},
    {"RegistryKeys", "registry", 300,
     [](int n) {
       return Repeat(
           n, "REGEDIT4\n",
           [](int i) { return "\n[HKEY_LOCAL_MACHINE\\k" + Number(i) + "]\n\"a\"=\"b\"\n"; }, "");
     }},
    {"RegistryValues", "registry", 500,
     [](int n) {
       return Repeat(
           n, "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\k]\n",
           [](int i) { return "\"v" + Number(i) + "\"=dword:00000001\n"; }, "");
     }},
    {"RegistryBytes", "registry", 3000,
     [](int n) {
       return Repeat(n, "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\k]\n\"v\"=hex:00", ",\\\n  01", "\n");
     }},
    {"RichTextGroups", "rtf", 3000,
     [](int n) { return Repeat(n, "{\\rtf1 ", "{\\b a", std::string(std::size_t(n) + 1, '}')); }},
    {"RichTextFonts", "rtf", 1000,
     [](int n) {
       return Repeat(
           n, "{\\rtf1{\\fonttbl", [](int i) { return "{\\f" + Number(i) + "\\fcharset204 F;}"; },
           "}\\f7 a}");
     }},
    {"MappedItems", "mapping", 100,
     [](int n) {
       return Repeat(
           n, "{\"version\":1,\"items\":[",
           [](int i) {
             return (i > 0 ? ",{\"oid\":" : "{\"oid\":") + Number(i + 1) +
                    ",\"kind\":\"contact\",\"uid\":\"u" + Number(i) +
                    "\",\"hash\":\"h\",\"state\":\"s\"}";
           },
           "],\"expected\":[]}");
     }},
    {"ArchiveMembers", "tar", 200,
     [](int n) {
       return Repeat(
           n, "", [](int i) { return Member("m" + Number(i)); }, std::string(1024, '\0'));
     }},
    {"XmlNames", "xml_load", 1000,
     [](int n) {
       return Repeat(
           n, "<A>", [](int i) { return "<n" + Number(i) + "/>"; }, "</A>");
     }},
    {"XmlDepth", "xml_load", 100,
     [](int n) { return Repeat(n, "", "<a>", Repeat(n, "", "</a>", "")); }},
    {"XmlReferences", "xml_load", 2000,
     [](int n) { return Repeat(n, "<A>", "&amp;<!---->", "</A>"); }},
    {"UploadedNames", "upload", 500,
     [](int n) {
       return Uploaded(n, "CONTACT",
                       [](int i) { return "<n" + Number(i) + ">1</n" + Number(i) + ">"; });
     }},
    {"UploadedCategories", "upload", 300,
     [](int n) {
       return Uploaded(1, "TASK", [&](int) {
         return Repeat(
             n, "<CATEGORIES>",
             [](int i) { return "<CATEGORY><Name>c" + Number(i) + "</Name></CATEGORY>"; },
             "</CATEGORIES>");
       });
     }},
    {"UploadedLineBreaks", "upload", 2000,
     [](int n) {
       return Uploaded(1, "TASK", [&](int) { return Repeat(n, "<NOTES>", "&#13;\n", "</NOTES>"); });
     }},
    {"UploadedExceptions", "upload", 30,
     [](int n) {
       return Uploaded(1, "CALENDAR", [&](int) {
         return Repeat(
             n,
             "<EVENT_START>20010101T100000</EVENT_START><EVENT_END>20010101T110000</EVENT_END>"
             "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>DAILY</TYPE>"
             "<FREQUENCY>1</FREQUENCY><END_DATE>0</END_DATE>",
             [](int i) {
               return "<ChangedException><EVENT_START>" + Day(i) +
                      "T120000</EVENT_START><EVENT_END>" + Day(i) +
                      "T130000</EVENT_END><OriginalDate>" + Day(i) +
                      "T000000</OriginalDate></ChangedException>";
             },
             "</RECURRENCE>");
       });
     }},
    {"DownloadedCategories", "records", 500,
     [](int n) {
       return Repeat(
           n, "<root><CONTACT Oid=\"1\"><CATEGORIES>",
           [](int i) { return "<CATEGORY><Name>c" + Number(i) + "</Name></CATEGORY>"; },
           "</CATEGORIES></CONTACT></root>");
     }},
    {"DownloadedLineBreaks", "records", 3000,
     [](int n) {
       return Repeat(n, "<root><CONTACT Oid=\"1\"><NOTES>", "&#13;\n", "</NOTES></CONTACT></root>");
     }},
    {"DownloadedExceptions", "records", 100,
     [](int n) {
       return Repeat(
           n,
           "<root><CALENDAR Oid=\"1\"><SUBJECT>s</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING>"
           "<RECURRENCE><TYPE>DAILY</TYPE><FREQUENCY>1</FREQUENCY><END_DATE>0</END_DATE>",
           [](int i) { return "<DeletedException>" + Day(i) + "T000000</DeletedException>"; },
           "</RECURRENCE><EVENT_START>20010101T100000</EVENT_START>"
           "<EVENT_END>20010101T110000</EVENT_END></CALENDAR></root>");
     }},
    {"DownloadedRecords", "records", 60,
     [](int n) {
       return Repeat(
           n, "<root>",
           [](int i) {
             return "<CONTACT Oid=\"" + Number(i + 1) + "\"><FIRST_NAME>a</FIRST_NAME></CONTACT>";
           },
           "</root>");
     }},
};

// Each input is read by a process of its own under a counter, which also counts its start.
class Work : public ::testing::TestWithParam<Shape> {
 protected:
  double Of(int size) {
    directory_.Write("input", GetParam().input(size));
    Process counter("/usr/bin/valgrind",
                    {"--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
                     ProgramPath("fuzz_feed"), GetParam().target, directory_ / "input"},
                    {.captureErrors = true});
    EXPECT_EQ(counter.Wait(), 0);
    const std::string said = counter.ReadErrors();
    const std::size_t at = said.find("refs:");
    if (at == std::string::npos) {
      ADD_FAILURE() << said;
      return 0;
    }
    std::string count = said.substr(at + 5, said.find('\n', at) - at - 5);
    count.erase(
        std::remove_if(count.begin(), count.end(), [](char c) { return c < '0' || c > '9'; }),
        count.end());
    return std::stod(count);
  }

 private:
  TemporaryDirectory directory_;
};

TEST_P(Work, GrowsWithTheInput) {
  const int size = GetParam().size;
  const double least = Of(1);
  const double once = Of(size) - least;
  const double twice = Of(2 * size) - least;
  RecordProperty("ratio", std::to_string(twice / once));
  EXPECT_GT(once, least / 20) << "too little to be told from the start of a program";
  EXPECT_LT(twice, 2.4 * once) << twice / once << " times the work for twice the input";
}

INSTANTIATE_TEST_SUITE_P(Of, Work, ::testing::ValuesIn(kShapes),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
