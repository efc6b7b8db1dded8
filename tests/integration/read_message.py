"""Prints what a message file holds, one thing a line, for tests to compare.

    header NAME VALUE          of the message itself, in order, decoded
    text TYPE CONTENT          a part that is no attachment
    attachment TYPE NAME HEX   its bytes

Values are JSON texts in ASCII, so each stays on its line.
"""

import email
import email.policy
import json
import sys

with open(sys.argv[1], "rb") as file:
    data = file.read()
if b"\n" in data.replace(b"\r\n", b""):
    print("a line ends in something else than CR LF")
message = email.message_from_bytes(data, policy=email.policy.default)
for name, value in message.items():
    if name not in ("Content-Type", "Content-Transfer-Encoding"):
        print("header", name, json.dumps(value))
for part in message.walk():
    if part.is_multipart():
        print("multipart", part.get_content_type())
    elif part.get_content_disposition() == "attachment":
        content = part.get_payload(decode=True)
        print("attachment", part.get_content_type(), json.dumps(part.get_filename()),
              content.hex())
    else:
        print("text", part.get_content_type(), json.dumps(part.get_content().replace("\r\n", "\n")))
