// Listens to the entries: menus, toolbar button, keys. Nothing else is listened to, except the page
// help.html of this extension, so no page can start anything.

import { gatherPage, gatherLink, gatherPicture, gatherSelection, gatherTabs, pictureOrigin } from "./gather.js";
import { share } from "./host.js";
import { onHelpMessage, pageOfHelp } from "./help_data.js";

const MENU = [
  ["page", ["page", "frame"]],
  ["link", ["link"]],
  ["selection", ["selection"]],
  ["picture", ["image"]],
  ["tabs", ["action"]],
];

chrome.runtime.onInstalled.addListener(() => {
  chrome.contextMenus.removeAll(() => {
    for (const [id, contexts] of MENU) {
      chrome.contextMenus.create({ id, contexts, title: chrome.i18n.getMessage(id) });
    }
    if (chrome.contextMenus.ContextType.TAB) { // Firefox has a menu of tabs
      chrome.contextMenus.update("tabs", { contexts: ["action", "tab"] });
    }
  });
});

// A permission can be asked for only while the click is handled, so before anything is awaited.
function ask(permissions) {
  return chrome.permissions.request(permissions).catch(() => false);
}

chrome.contextMenus.onClicked.addListener((info, tab) => {
  switch (info.menuItemId) {
    case "page":
      return run(tab, gatherPage(tab));
    case "link":
      return run(tab, gatherLink(info, tab));
    case "selection":
      return run(tab, gatherSelection(info, tab));
    case "tabs":
      return run(tab, gatherTabs(tab, ask({ permissions: ["tabs"] })));
    case "picture": {
      const origin = pictureOrigin(info, tab);
      return run(tab, gatherPicture(info, tab, origin ? ask({ origins: [origin] }) : Promise.resolve(false)));
    }
  }
});

chrome.action.onClicked.addListener((tab) => run(tab, gatherPage(tab)));

chrome.commands.onCommand.addListener((command, tab) => {
  if (command === "tabs") {
    run(tab, gatherTabs(tab, ask({ permissions: ["tabs"] })));
  }
});

chrome.runtime.onMessage.addListener(onHelpMessage);

const lastOfTab = new Map();
let count = 0;

// Shares what comes, and says on the toolbar button of the tab what becomes of it.
async function run(tab, gathering) {
  const number = ++count;
  lastOfTab.set(tab.id, number);
  const say = (badge, words) => {
    if (lastOfTab.get(tab.id) !== number) {
      return; // the button tells of a later share
    }
    for (const told of [
      chrome.action.setBadgeText({ tabId: tab.id, text: badge }),
      chrome.action.setTitle({ tabId: tab.id, title: words || chrome.i18n.getMessage("page") }),
    ]) {
      told.catch(() => {}); // the tab may be closed
    }
  };
  say("…", chrome.i18n.getMessage("sharing"));
  const draft = await gathering;
  const end = await share(draft, (word) => {
    say("…", chrome.i18n.getMessage(word.waiting ? "waiting" : "sharing"));
  });
  if (end.failed) {
    say("!", chrome.i18n.getMessage(end.failed));
    await chrome.tabs.create({ url: pageOfHelp(end, draft) });
  } else if (end.title) {
    say("!", `${end.title}\n${end.body}`);
  } else {
    say("✓", "");
    setTimeout(() => {
      say("", "");
      if (lastOfTab.get(tab.id) === number) {
        lastOfTab.delete(tab.id);
      }
    }, 3000);
  }
}
