// What is marked in a frame, as HTML that looks as it does there. This function is sent into the
// frame as its text, so it uses nothing from outside of itself.

export function selectionOfFrame(most) {
  const KEPT = ["color", "font-family", "font-size", "font-style", "font-weight", "white-space"];
  const TAGS = new Set(("a b blockquote br center code dd div dl dt em h1 h2 h3 h4 h5 h6 hr i li ol p pre s " +
    "strong sub sup table tbody td tfoot th thead tr u ul").split(" "));
  const DROPPED = new Set("script style noscript template iframe object embed audio video canvas svg".split(" "));
  const escaped = (text) => text.replace(/[&<>"]/g, (one) => `&#${one.charCodeAt(0)};`);
  const selection = getSelection();
  const text = selection.toString();
  if (text.length > most.text) {
    return { isTooLong: true };
  }
  const parts = [];
  let length = 0;
  let hasWords = false; // not so in a field of a form: a range does not go into it
  const add = (part) => {
    length += part.length;
    if (length > most.html) {
      throw new RangeError("too long");
    }
    parts.push(part);
  };
  // The style that an element has and what is around it has not.
  const styleOf = (look, around) => {
    const style = KEPT.filter((name) => look.getPropertyValue(name) !== around?.getPropertyValue(name))
      .map((name) => `${name}: ${look.getPropertyValue(name)}`);
    if (look.backgroundColor !== "rgba(0, 0, 0, 0)" && look.backgroundColor !== "transparent") {
      style.push(`background-color: ${look.backgroundColor}`);
    }
    if (look.textDecorationLine !== "none") {
      style.push(`text-decoration: ${look.textDecorationLine}`);
    }
    return style.length ? ` style="${escaped(style.join("; "))}"` : "";
  };
  const open = (element, look, around) => {
    const name = element.localName;
    const isBlock = !look.display.startsWith("inline") && look.display !== "contents";
    const tag = TAGS.has(name) ? name : isBlock ? "div" : "span";
    const link = tag === "a" && element.href ? ` href="${escaped(String(element.href))}"` : "";
    const spans = ["colspan", "rowspan", "start"].map((attribute) => element.hasAttribute(attribute)
      ? ` ${attribute}="${escaped(element.getAttribute(attribute))}"` : "").join("");
    add(`<${tag}${link}${spans}${styleOf(look, around)}>`);
    return tag === "br" || tag === "hr" ? "" : `</${tag}>`;
  };
  const copy = (node, range, around) => {
    if (!range.intersectsNode(node)) {
      return;
    }
    if (node.nodeType === Node.TEXT_NODE) {
      const end = node === range.endContainer ? range.endOffset : node.data.length;
      const words = node.data.slice(node === range.startContainer ? range.startOffset : 0, end);
      hasWords ||= words.trim() !== "";
      add(escaped(words));
    } else if (node.nodeType === Node.ELEMENT_NODE && !DROPPED.has(node.localName)) {
      const look = getComputedStyle(node);
      if (look.display === "none" || look.visibility === "hidden" || look.userSelect === "none") {
        return;
      }
      const close = open(node, look, around);
      if (node.localName === "img") {
        add(escaped(node.alt));
      }
      node.childNodes.forEach((child) => copy(child, range, look));
      add(close);
    }
  };
  try {
    for (let at = 0; at < selection.rangeCount; ++at) { // Firefox has several
      const range = selection.getRangeAt(at);
      const ancestor = range.commonAncestorContainer;
      const element = ancestor.nodeType === Node.ELEMENT_NODE ? ancestor : ancestor.parentElement;
      const look = getComputedStyle(element);
      const link = element.closest("a[href]");
      add(`<div${styleOf(look)}>`);
      if (link) {
        add(`<a href="${escaped(String(link.href))}">`);
      }
      if (ancestor === element) {
        element.childNodes.forEach((child) => copy(child, range, look));
      } else {
        copy(ancestor, range, look);
      }
      add(link ? "</a></div>" : "</div>");
    }
  } catch {
    // Too long, too deep, or a form with a field that hides what is asked of the form.
    return { text, hasLostStyles: true };
  }
  return hasWords ? { text, html: parts.join("") } : { text };
}
