// What a handheld's owner can set.
#pragma once

namespace ce::host {

// Names of the handheld's own settings: values of this key.
namespace setting {
inline constexpr char16_t kKey[] = u"HKEY_LOCAL_MACHINE\\Handheld";
inline constexpr char16_t kFormatVersion[] = u"FormatVersion";      // DWORD
inline constexpr char16_t kLanguage[] = u"Language";                // DWORD, a LANGID
inline constexpr char16_t kOsMajor[] = u"OsMajor";                  // DWORD
inline constexpr char16_t kOsMinor[] = u"OsMinor";                  // DWORD
inline constexpr char16_t kZone[] = u"Zone";                        // SZ
inline constexpr char16_t kOwner[] = u"Owner";                      // SZ
inline constexpr char16_t kClockOffset[] = u"ClockOffset";          // SZ, milliseconds, signed
inline constexpr char16_t kFirstOid[] = u"FirstOid";                // DWORD
inline constexpr char16_t kYomiFields[] = u"YomiFields";            // DWORD, 0: no Yomi fields
inline constexpr char16_t kPeerTimeout[] = u"PeerTimeout";          // DWORD, seconds (600)
inline constexpr char16_t kRequestTimeout[] = u"RequestTimeout";    // DWORD, seconds (30)
inline constexpr char16_t kMaxBlock[] = u"MaxBlock";                // DWORD, bytes (256 MiB)
inline constexpr char16_t kUploadMemory[] = u"UploadMemory";        // DWORD, bytes (512 MiB)
inline constexpr char16_t kMaxContactText[] = u"MaxContactText";    // DWORD, characters (1023)
inline constexpr char16_t kMaxBody[] = u"MaxBody";                  // DWORD, bytes (61440)
inline constexpr char16_t kMaxSubject[] = u"MaxSubject";            // DWORD, characters (4095)
inline constexpr char16_t kMaxCalendarText[] = u"MaxCalendarText";  // DWORD, characters (1023)
inline constexpr char16_t kReminderSet[] = u"ReminderSet";          // DWORD, 0: not set (1)
inline constexpr char16_t kReminderMinutes[] = u"ReminderMinutes";  // DWORD (15)
inline constexpr char16_t kRichInk[] = u"RichInk";                  // DWORD, 0: no RichInk control
inline constexpr char16_t kPhone[] = u"Phone";                      // DWORD, 0: no telephone
}  // namespace setting

}  // namespace ce::host
