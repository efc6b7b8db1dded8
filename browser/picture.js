// The bytes of a picture, in Base64: those of its file when the person's mail program can read such
// files, and else a PNG picture of what is seen. None when they cannot be had.

const MOST_BYTES = 32 << 20;
const MOST_MILLISECONDS = 15_000; // a camera sends pictures without an end

// For a picture that this extension was allowed to read.
export async function bytesOfPicture(address) {
  const response = await fetch(address,
    { credentials: "include", cache: "force-cache", signal: AbortSignal.timeout(MOST_MILLISECONDS) });
  const blob = response.ok ? await response.blob() : new Blob();
  if (!blob.size || blob.size > MOST_BYTES) {
    return null;
  }
  const bytes = new Uint8Array(await blob.arrayBuffer());
  return isReadable(bytes) ? base64Of(bytes) : base64Of(await pngOf(blob));
}

function isReadable(bytes) {
  const begin = String.fromCharCode(...bytes.subarray(0, 16));
  return /^(\x89PNG\r\n\x1a\n|\xff\xd8\xff|GIF8[79]a|II\*\0|MM\0\*|RIFF[^]{4}WEBP)/.test(begin);
}

async function pngOf(blob) {
  const picture = await createImageBitmap(blob);
  const canvas = new OffscreenCanvas(picture.width, picture.height);
  canvas.getContext("2d").drawImage(picture, 0, 0);
  return new Uint8Array(await (await canvas.convertToBlob({ type: "image/png" })).arrayBuffer());
}

function base64Of(bytes) {
  let text = "";
  for (let at = 0; at < bytes.length; at += 8192) {
    text += String.fromCharCode(...bytes.subarray(at, at + 8192));
  }
  return btoa(text);
}

// For a picture of the frame's own. This function is sent into the frame as its text, so it uses
// nothing from outside of itself.
export async function pictureOfFrame(address) {
  const MOST = 32 << 20;
  const MOST_MILLISECONDS = 15_000;
  const base64Of = (blob) => new Promise((resolve) => {
    const reader = new FileReader();
    reader.onload = () => resolve(reader.result.slice(reader.result.indexOf(",") + 1));
    reader.onerror = () => resolve(null);
    reader.readAsDataURL(blob);
  });
  try {
    const response = await fetch(address,
      { cache: "force-cache", signal: AbortSignal.timeout(MOST_MILLISECONDS) });
    const blob = response.ok ? await response.blob() : new Blob();
    const begin = await blob.slice(0, 16).arrayBuffer();
    const signature = String.fromCharCode(...new Uint8Array(begin));
    if (blob.size <= MOST &&
        /^(\x89PNG\r\n\x1a\n|\xff\xd8\xff|GIF8[79]a|II\*\0|MM\0\*|RIFF[^]{4}WEBP)/.test(signature)) {
      return await base64Of(blob);
    }
  } catch {
    // a page may be forbidden to read what it shows, or it has no end
  }
  try {
    const image = [...document.images].find((one) => one.currentSrc === address || one.src === address);
    if (!image?.naturalWidth) {
      return null;
    }
    const canvas = document.createElement("canvas");
    canvas.width = image.naturalWidth;
    canvas.height = image.naturalHeight;
    canvas.getContext("2d").drawImage(image, 0, 0);
    const blob = await new Promise((resolve) => canvas.toBlob(resolve, "image/png"));
    return blob && blob.size <= MOST ? await base64Of(blob) : null;
  } catch {
    return null; // the picture is of another host, which lets nobody read it
  }
}
