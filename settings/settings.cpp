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

constexpr TWatchedSetting User(const Text& name, std::wstring_view keyPath,
                               std::wstring_view valueName, std::wstring_view defaultValue) {
  return {name,    false,     RootKey::CurrentUser, L"HKEY_CURRENT_USER",
          keyPath, valueName, defaultValue};
}

constexpr TWatchedSetting Machine(const Text& name, std::wstring_view keyPath,
                                  std::wstring_view valueName, std::wstring_view defaultValue) {
  return {name,    false,     RootKey::LocalMachine, L"HKEY_LOCAL_MACHINE",
          keyPath, valueName, defaultValue};
}

constexpr TWatchedSetting AllUsers(const Text& name, std::wstring_view keyPath,
                                   std::wstring_view valueName, std::wstring_view defaultValue) {
  auto setting = Machine(name, keyPath, valueName, defaultValue);
  setting.allUsers = true;
  return setting;
}

constexpr std::array kSettings{
    User(messages::kStartPage, kMain, L"Start Page", kStartPage),
    User(messages::kSearchPage, kMain, L"Search Page", kSearchPage),
    User(messages::kDefaultPage, kMain, L"Default_Page_URL", kDefaultPage),
    User(messages::kLocalPage, kMain, L"Local Page", kLocalPage),
    User(messages::kSearchBar, kMain, L"Search Bar", kSearchBar),
    User(messages::kDefaultSearch, kMain, L"Default_Search_URL", kDefaultSearch),
    User(messages::kSearchUrl, kSearchUrl, L"", kAutoSearch),
    AllUsers(messages::kStartPage, kMain, L"Start Page", kStartPage),
    AllUsers(messages::kSearchPage, kMain, L"Search Page", kSearchPage),
    AllUsers(messages::kDefaultPage, kMain, L"Default_Page_URL", kDefaultPage),
    AllUsers(messages::kLocalPage, kMain, L"Local Page", kLocalPage),
    AllUsers(messages::kSearchBar, kMain, L"Search Bar", kSearchBar),
    AllUsers(messages::kDefaultSearch, kMain, L"Default_Search_URL", kDefaultSearchAllUsers),
    AllUsers(messages::kSearchUrl, kSearchUrl, L"", kAutoSearch),
    AllUsers(messages::kCustomizeSearch, kSearch, L"CustomizeSearch", kCustomizeSearch),
    AllUsers(messages::kSearchAssistant, kSearch, L"SearchAssistant", kSearchAssistant),
    Machine(messages::kBlankPage, kAboutUrls, L"blank", kBlank),
    Machine(messages::kDesktopNavFail, kAboutUrls, L"DesktopItemNavigationFailure",
            kNavigationCanceled),
    Machine(messages::kNavCancel, kAboutUrls, L"NavigationCanceled", kNavigationCanceled),
    // The browser has no page of its own for this one.
    Machine(messages::kNavFail, kAboutUrls, L"NavigationFailure", kNavigationCanceled),
    Machine(messages::kOfflineInfo, kAboutUrls, L"OfflineInformation", kOffline),
    Machine(messages::kPostNotCached, kAboutUrls, L"PostNotCached", kPostNotCached),
};

}  // namespace

std::span<const TWatchedSetting> WatchedSettings() { return kSettings; }

std::wstring DisplayName(const TWatchedSetting& setting, const MessageLookup& messages) {
  std::wstring name = messages.Message(setting.name);
  if (setting.allUsers) name += L"(" + messages.Message(messages::kAllUser) + L")";
  return name;
}

std::wstring LocationOf(const TWatchedSetting& setting) {
  std::wstring location(setting.rootName);
  location += setting.keyPath;
  location += L'|';
  location += setting.valueName;
  return location;
}

}  // namespace tarvelin
