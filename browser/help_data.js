// What the page help.html shows, kept in memory until it asks: nothing of it gets into an address,
// which the browser would remember.

const kept = new Map();
let last = 0;

// Answers the address of the page that will show this.
export function pageOfHelp(end, draft) {
  kept.set(String(++last), { failed: end.failed, reason: end.reason, link: commandOf(draft) });
  return chrome.runtime.getURL(`help.html#${last}`);
}

export function onHelpMessage(message, sender, answer) {
  if (sender.url?.split("#")[0] === chrome.runtime.getURL("help.html")) {
    answer(kept.get(message));
    kept.delete(message);
  }
}

const MOST_LINK = 100_000; // a desktop gives a program no longer argument

// The same as a link that any browser may open, with texts and links alone.
function commandOf(draft) {
  const lines = [draft.plain ?? draft.text, ...draft.links].filter(Boolean);
  const linkOf = (body) => "quoll://compose?" + Object.entries({ subject: draft.title, plainBody: body })
    .filter(([, value]) => value).map(([key, value]) => `${key}=${encodeURIComponent(value.toWellFormed())}`).join("&");
  const whole = linkOf(lines.join("\n"));
  return whole.length <= MOST_LINK ? { address: whole }
    : { address: linkOf(draft.links.join("\n").slice(0, 10_000)), isCut: true };
}
