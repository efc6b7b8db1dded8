// Says why nothing was shared, and offers the same as a link.

for (const element of document.querySelectorAll("[data-message]")) {
  element.textContent = chrome.i18n.getMessage(element.dataset.message);
}
const kept = await chrome.runtime.sendMessage(location.hash.slice(1)).catch(() => null);
const show = (id, words) => {
  document.getElementById(id).textContent = words;
};
show("what", chrome.i18n.getMessage(kept ? kept.failed : "forgotten"));
if (kept?.reason) {
  show("reason", chrome.i18n.getMessage("reason", [kept.reason]));
}
const link = document.getElementById("link");
if (kept) {
  link.href = kept.link.address;
  document.getElementById("cut").hidden = !kept.link.isCut;
} else {
  link.hidden = true;
}
