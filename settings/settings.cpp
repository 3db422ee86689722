#include "settings/settings.h"

#include <array>

namespace tarvelin {

namespace {

constexpr std::wstring_view kMain = L"\\Software\\Microsoft\\Internet Explorer\\Main";
constexpr std::wstring_view kSearchUrl = L"\\Software\\Microsoft\\Internet Explorer\\SearchUrl";
constexpr std::wstring_view kSearch = L"\\Software\\Microsoft\\Internet Explorer\\Search";
constexpr std::wstring_view kAboutUrls = L"\\Software\\Microsoft\\Internet Explorer\\AboutURLs";

// The values that Internet Explorer itself ships with.
constexpr std::wstring_view kStartPage = L"http://www.msn.com";
constexpr std::wstring_view kSearchPage =
    L"http://www.microsoft.com/isapi/redir.dll?prd=ie&ar=iesearch";
constexpr std::wstring_view kDefaultPage =
    L"http://www.microsoft.com/isapi/redir.dll?prd=ie&pver=6&ar=msnhome";
constexpr std::wstring_view kLocalPage = L"C:\\WINDOWS\\system32\\blank.htm";
constexpr std::wstring_view kSearchBar = L"http://home.microsoft.com/search/lobby/search.asp";
constexpr std::wstring_view kDefaultSearch = L"http://home.microsoft.com/search/search.asp";
// The leading blank belongs to the machine-wide value.
constexpr std::wstring_view kDefaultSearchAllUsers =
    L" http://home.microsoft.com/search/search.asp";
constexpr std::wstring_view kAutoSearch = L"http://home.microsoft.com/access/autosearch.asp?p=%s";
// The browser replaces {SUB_RFC1766} by the user's language.
constexpr std::wstring_view kCustomizeSearch =
    L"http://ie.search.msn.com/{SUB_RFC1766}/srchasst/srchcust.htm";
constexpr std::wstring_view kSearchAssistant =
    L"http://ie.search.msn.com/{SUB_RFC1766}/srchasst/srchasst.htm";
constexpr std::wstring_view kBlank = L"res://mshtml.dll/blank.htm";
constexpr std::wstring_view kNavigationCanceled = L"res://shdoclc.dll/navcancl.htm";
constexpr std::wstring_view kOffline = L"res://shdoclc.dll/offcancl.htm";
constexpr std::wstring_view kPostNotCached = L"res://mshtml.dll/repost.htm";

constexpr auto kUser = RootKey::CurrentUser;
constexpr auto kMachine = RootKey::LocalMachine;

constexpr auto kSettings = std::to_array<TWatchedSetting>({
    {kUser, messages::kStartPage, kMain, L"Start Page", kStartPage},
    {kUser, messages::kSearchPage, kMain, L"Search Page", kSearchPage},
    {kUser, messages::kDefaultPage, kMain, L"Default_Page_URL", kDefaultPage},
    {kUser, messages::kLocalPage, kMain, L"Local Page", kLocalPage},
    {kUser, messages::kSearchBar, kMain, L"Search Bar", kSearchBar},
    {kUser, messages::kDefaultSearch, kMain, L"Default_Search_URL", kDefaultSearch},
    {kUser, messages::kSearchUrl, kSearchUrl, L"", kAutoSearch},
    {kMachine, messages::kStartPage, kMain, L"Start Page", kStartPage},
    {kMachine, messages::kSearchPage, kMain, L"Search Page", kSearchPage},
    {kMachine, messages::kDefaultPage, kMain, L"Default_Page_URL", kDefaultPage},
    {kMachine, messages::kLocalPage, kMain, L"Local Page", kLocalPage},
    {kMachine, messages::kSearchBar, kMain, L"Search Bar", kSearchBar},
    {kMachine, messages::kDefaultSearch, kMain, L"Default_Search_URL", kDefaultSearchAllUsers},
    {kMachine, messages::kSearchUrl, kSearchUrl, L"", kAutoSearch},
    {kMachine, messages::kCustomizeSearch, kSearch, L"CustomizeSearch", kCustomizeSearch},
    {kMachine, messages::kSearchAssistant, kSearch, L"SearchAssistant", kSearchAssistant},
    {kMachine, messages::kBlankPage, kAboutUrls, L"blank", kBlank},
    {kMachine, messages::kDesktopNavFail, kAboutUrls, L"DesktopItemNavigationFailure",
     kNavigationCanceled},
    {kMachine, messages::kNavCancel, kAboutUrls, L"NavigationCanceled", kNavigationCanceled},
    // The browser has no page of its own for this one.
    {kMachine, messages::kNavFail, kAboutUrls, L"NavigationFailure", kNavigationCanceled},
    {kMachine, messages::kOfflineInfo, kAboutUrls, L"OfflineInformation", kOffline},
    {kMachine, messages::kPostNotCached, kAboutUrls, L"PostNotCached", kPostNotCached},
});

}  // namespace

std::span<const TWatchedSetting> WatchedSettings() { return kSettings; }

std::wstring DisplayName(const TWatchedSetting& setting, const MessageLookup& messages) {
  std::wstring name = messages.Message(setting.name);
  // The built-in pages are the machine's alone and need no telling apart.
  if (setting.root == RootKey::LocalMachine && setting.keyPath != kAboutUrls) {
    name += L"(" + messages.Message(messages::kAllUser) + L")";
  }
  return name;
}

}  // namespace tarvelin
