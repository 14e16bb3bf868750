// SPDX-License-Identifier: Apache-2.0
// A film that may be too much for the viewer, or not be the viewer's to see: says how it is rated, lets the viewer unlock it, and says
// whose rights are missing.   avc-run --parental-limit 12 examples/rated/rated.js -- http://…/film.cas [TYPE [AGE]]
// AGE is the limit once the viewer has unlocked it; a television asks for a PIN in a menu of its own.
if (arguments.length === 0) {
  console.error("usage: avc-run --parental-limit 12 examples/rated/rated.js -- http://…/film.cas [TYPE [AGE]]");
  exit(2);
}

const [url, type = "application/vnd.oipf.ContentAccessStreaming+xml", unlockedAge] = arguments;
const video = document.createElement("object");
video.type = type;
let allowed = true;

// Blocked content comes to stand, and stays there until somebody plays it again.
function playOn() {
  if (allowed && video.playState === 2) video.play(1);
}

// One object shows all ratings, each in its turn: it is read before the next one is asked for.
function read(ratings) {
  const texts = [];
  for (let i = 0; i < ratings.length; i += 1) {
    const rating = ratings.item(i);
    texts.push(`${rating.name} (${rating.scheme}${rating.region ? ", " + rating.region : ""})`);
  }
  return texts.join(", ");
}

video.onParentalRatingChange = (contentID, ratings, DRMSystemID, blocked) => {
  console.log("rated", read(ratings), blocked ? "- blocked" : "- allowed");
  allowed = !blocked;
  if (allowed) return playOn();
  if (unlockedAge === undefined) return exit(1);
  console.log("unlocked up to", unlockedAge);
  setParentalLimit(unlockedAge);
};
video.onParentalRatingError = (contentID, ratings) => console.log("rated", read(ratings), "- not understood");
video.onDRMRightsError = (errorState, contentID, DRMSystemID, rightsIssuerURL) => {
  console.log(errorState === 0 ? "no rights to" : "wrong rights to", contentID, "of", DRMSystemID || "nobody", rightsIssuerURL || "");
};
video.onPlayStateChange = (state) => {
  console.log("playState", state);
  playOn();
  if (state === 5 || state === 6) exit(state === 5 ? 0 : 1);
};

document.body.appendChild(video);
video.data = url;
video.play(1);
