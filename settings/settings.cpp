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

using Text = std::wstring_view;

constexpr TWatchedSetting User(Text messageKey, Text englishName, Text keyPath, Text valueName,
                               Text defaultValue) {
  return {messageKey,           englishName, false,     RootKey::CurrentUser,
          L"HKEY_CURRENT_USER", keyPath,     valueName, defaultValue};
}

constexpr TWatchedSetting Machine(Text messageKey, Text englishName, Text keyPath, Text valueName,
                                  Text defaultValue) {
  return {messageKey, englishName, false,       RootKey::LocalMachine, L"HKEY_LOCAL_MACHINE",
          keyPath,    valueName,   defaultValue};
}

constexpr TWatchedSetting AllUsers(Text messageKey, Text englishName, Text keyPath, Text valueName,
                                   Text defaultValue) {
  auto setting = Machine(messageKey, englishName, keyPath, valueName, defaultValue);
  setting.allUsers = true;
  return setting;
}

constexpr std::array kSettings{
    User(L"M_Start_Page", L"Start Page", kMain, L"Start Page", kStartPage),
    User(L"M_Search_Page", L"Search Page", kMain, L"Search Page", kSearchPage),
    User(L"M_Default_Page", L"Default Page URL", kMain, L"Default_Page_URL", kDefaultPage),
    User(L"M_Local_Page", L"Local Page", kMain, L"Local Page", kLocalPage),
    User(L"M_Search_Bar", L"Search Bar", kMain, L"Search Bar", kSearchBar),
    User(L"M_Default_Search", L"Default Search URL", kMain, L"Default_Search_URL", kDefaultSearch),
    User(L"M_Search_URL", L"Search URL", kSearchUrl, L"", kAutoSearch),
    AllUsers(L"M_Start_Page", L"Start Page", kMain, L"Start Page", kStartPage),
    AllUsers(L"M_Search_Page", L"Search Page", kMain, L"Search Page", kSearchPage),
    AllUsers(L"M_Default_Page", L"Default Page URL", kMain, L"Default_Page_URL", kDefaultPage),
    AllUsers(L"M_Local_Page", L"Local Page", kMain, L"Local Page", kLocalPage),
    AllUsers(L"M_Search_Bar", L"Search Bar", kMain, L"Search Bar", kSearchBar),
    AllUsers(L"M_Default_Search", L"Default Search URL", kMain, L"Default_Search_URL",
             kDefaultSearchAllUsers),
    AllUsers(L"M_Search_URL", L"Search URL", kSearchUrl, L"", kAutoSearch),
    AllUsers(L"M_Customize_Search", L"Customize Search", kSearch, L"CustomizeSearch",
             kCustomizeSearch),
    AllUsers(L"M_Search_Assistant", L"Search Assistant", kSearch, L"SearchAssistant",
             kSearchAssistant),
    Machine(L"M_Blank_Page", L"Blank Page", kAboutUrls, L"blank", kBlank),
    Machine(L"M_Desktop_Nav_Fail", L"Desktop Navigation Failure", kAboutUrls,
            L"DesktopItemNavigationFailure", kNavigationCanceled),
    Machine(L"M_Nav_Cancel", L"Navigation Canceled", kAboutUrls, L"NavigationCanceled",
            kNavigationCanceled),
    // The browser has no page of its own for this one.
    Machine(L"M_Nav_Fail", L"Navigation Failure", kAboutUrls, L"NavigationFailure",
            kNavigationCanceled),
    Machine(L"M_Offline_Info", L"Offline Information", kAboutUrls, L"OfflineInformation", kOffline),
    Machine(L"M_Post_Not_Cached", L"Post Not Cached", kAboutUrls, L"PostNotCached", kPostNotCached),
};

}  // namespace

std::span<const TWatchedSetting> WatchedSettings() { return kSettings; }

std::wstring DisplayName(const TWatchedSetting& setting, const MessageLookup& messages) {
  std::wstring name = messages.Message(setting.messageKey, setting.englishName);
  if (setting.allUsers) name += L"(" + messages.Message(L"M_All_User", L"All Users") + L")";
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
