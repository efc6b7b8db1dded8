// Makes a draft of what the person chose: { title, text, html, links, pictures, missing }. `missing`
// names what the browser could not give, in the host's words for it; `plain` is what a link of the
// HTML would hold.
// A page may change or go away at any moment: then what the click itself told is shared.

import { selectionOfFrame } from "./selection.js";
import { bytesOfPicture, pictureOfFrame } from "./picture.js";

const MOST_TITLE = 1000;
const MOST_SELECTION = { html: 4 << 20, text: 16 << 20 }; // characters
const SHAREABLE = /^(https?|ftp|mailto|tel):/i;

const draftOf = (title, links = []) => ({
  title: (title ?? "").trim().slice(0, MOST_TITLE), links: links.filter((link) => SHAREABLE.test(link ?? "")),
  pictures: [], missing: [],
});

// What has no address that others can open is said by the host, as everything else is.
const orNothing = (draft) => {
  if (!draft.html && !draft.text && !draft.links.length && !draft.pictures.length) {
    draft.missing = ["address"];
  }
  return draft;
};

// What runs in the frame where the click was; none when nothing may run there.
async function inFrame(info, tab, func, args) {
  try {
    const target = { tabId: tab.id, frameIds: [info.frameId ?? 0] };
    const [{ result }] = await chrome.scripting.executeScript({ target, func, args });
    return result ?? null;
  } catch {
    return null;
  }
}

export async function gatherPage(tab) {
  return orNothing(draftOf(tab.title, [tab.url]));
}

export async function gatherLink(info, tab) {
  const words = info.linkText || await inFrame(info, tab, (address) =>
    [...document.links].find((link) => link.href === address && link.textContent.trim())
      ?.textContent.trim().slice(0, 10000), [info.linkUrl]);
  return orNothing(draftOf(words?.replace(/\s+/g, " "), [info.linkUrl]));
}

export async function gatherSelection(info, tab) {
  const draft = draftOf(tab.title, [info.frameUrl ?? info.pageUrl ?? tab.url]);
  const selection = await inFrame(info, tab, selectionOfFrame, [MOST_SELECTION]);
  const text = selection?.text || info.selectionText || "";
  if (selection?.html) {
    draft.html = selection.html;
    draft.plain = text;
  } else if (selection?.isTooLong) {
    draft.missing.push("selection");
  } else {
    draft.text = text;
    if (selection?.hasLostStyles) {
      draft.missing.push("styles");
    }
  }
  return orNothing(draft);
}

const originOf = (address) => {
  try {
    return new URL(address).origin;
  } catch {
    return "null";
  }
};

// The host whose leave is needed for a picture, as a pattern: none when the page itself may read it.
// None for a private window either: a leave is remembered, and what this extension fetches itself is
// fetched outside of that window, with the cookies and the cache of all others.
export function pictureOrigin(info, tab) {
  const own = originOf(info.frameUrl ?? info.pageUrl ?? tab.url);
  const wanted = originOf(info.srcUrl);
  return !tab.incognito && /^https?:/i.test(info.srcUrl ?? "") && wanted !== own
    ? `${wanted.replace(/:\d+$/, "")}/*` : null;
}

export async function gatherPicture(info, tab, asked) {
  const isAllowed = await asked;
  const bytes = (isAllowed && await bytesOfPicture(info.srcUrl).catch(() => null)) ||
    await inFrame(info, tab, pictureOfFrame, [info.srcUrl]);
  const draft = draftOf(tab.title, bytes ? [] : [info.srcUrl]);
  if (bytes) {
    draft.pictures.push(bytes);
  } else {
    draft.missing.push("picture");
    if (!draft.links.length) { // what has no address of its own is on the page
      draft.links = draftOf("", [info.pageUrl ?? tab.url]).links;
    }
  }
  return orNothing(draft);
}

const escaped = (text) => text.replace(/[&<>"]/g, (one) => `&#${one.charCodeAt(0)};`);

// Many links are a list: without one they would stand in one line.
const listOf = (tabs) => tabs.map(({ title, url }) =>
  `<p>${escaped(title ?? "")}<br><a href="${escaped(url)}">${escaped(url)}</a></p>`).join("\n");

export async function gatherTabs(tab, asked) {
  const isAllowed = await asked;
  const found = tab.highlighted
    ? await chrome.tabs.query({ windowId: tab.windowId, highlighted: true }) : [tab];
  const tabs = isAllowed ? found.filter(({ url }) => SHAREABLE.test(url ?? "")) : [tab];
  const missing = tabs.length === found.length ? [] : isAllowed ? ["pages"] : ["tabs"];
  if (tabs.length < 2) {
    const draft = await gatherPage(tabs[0] ?? tab);
    if (draft.links.length) {
      draft.missing = missing;
    }
    return draft;
  }
  const draft = draftOf(chrome.i18n.getMessage("titleOfTabs", [tabs[0].title || tabs[0].url, String(tabs.length - 1)]));
  draft.missing = missing;
  draft.html = listOf(tabs);
  draft.plain = tabs.map(({ title, url }) => `${title}\n${url}\n`).join("\n");
  return draft;
}
