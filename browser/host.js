// The conversation with quoll-share-browser, a program of the person's computer that this browser
// starts. A draft goes to it in pieces, each below what a browser lets pass.

const HOST = "it.vorlent.quoll2";
const VERSION = 1;
const PIECE = 256 * 1024; // characters; a multiple of 4, so that Base64 can be cut there

function* piecesOf(text) {
  for (let at = 0; at < text.length;) {
    let end = Math.min(at + PIECE, text.length);
    if (end < text.length && /[\ud800-\udbff]/.test(text[end - 1])) {
      --end; // a character of two halves stays whole
    }
    yield text.slice(at, end);
    at = end;
  }
}

// Zero bytes and halves of characters are no text.
const clean = (text) => text.replaceAll("\0", "").toWellFormed();

export function* framesOf(draft) {
  yield { version: VERSION };
  if (draft.title) {
    yield { title: clean(draft.title) };
  }
  for (const kind of ["text", "html"]) {
    for (const piece of piecesOf(clean(draft[kind] ?? ""))) {
      yield { [kind]: piece };
    }
  }
  for (const link of draft.links) {
    yield { link: clean(link) };
  }
  for (const picture of draft.pictures) {
    for (const piece of piecesOf(picture)) {
      yield { picture: piece };
    }
    yield { next: true };
  }
  for (const missing of draft.missing) {
    yield { missing };
  }
  yield { end: true };
}

// Answers how the share ended: { opened, title, body } in the program's words, or { failed, reason }
// when the program was not reached ("noHost") or ended in the middle ("broken").
export function share(draft, onWord) {
  return new Promise((resolve) => {
    let isReached = false;
    const failed = (reason) => resolve({ failed: isReached ? "broken" : "noHost", reason });
    try {
      const port = chrome.runtime.connectNative(HOST);
      port.onMessage.addListener((word) => {
        isReached = true;
        if (word.end) {
          resolve(word.end);
          port.disconnect();
        } else {
          onWord(word);
        }
      });
      port.onDisconnect.addListener((gone) => {
        failed(gone?.error?.message ?? chrome.runtime.lastError?.message ?? "");
      });
      for (const frame of framesOf(draft)) {
        port.postMessage(frame);
      }
    } catch (error) {
      failed(String(error?.message ?? error));
    }
  });
}
