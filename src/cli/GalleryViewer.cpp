#include "cli/GalleryPage.h"

namespace pixkit::cli {

// A dialog is closed, and so not seen, until the script opens it. Keys and buttons do the same things by the same
// names.
const char* const galleryViewer = R"html(<dialog id="viewer" aria-label="Picture">
<div class="stage" tabindex="-1"><div class="pair"><img id="earlier" alt="" hidden><img id="picture" alt=""></div></div>
<div class="bar">
<p aria-live="polite"><b></b> <span class="soft"></span></p>
<label id="split" hidden>Before <input type="range" min="0" max="100" value="0" aria-label="How much is shown as it was before"></label>
<span id="buttons">
<button data-do="previous" title="Left arrow" aria-label="Previous">‹</button>
<button data-do="next" title="Right arrow" aria-label="Next">›</button>
<button data-do="smaller" title="-" aria-label="Smaller">−</button>
<button data-do="fit" title="0">Fit</button>
<button data-do="whole" title="1">1:1</button>
<button data-do="larger" title="+" aria-label="Larger">+</button>
<button data-do="backdrop" title="c" aria-label="Behind transparent parts: squares, black, white">▦</button>
<button data-do="before" title="b" hidden>Before</button>
<button data-do="close" title="Escape" aria-label="Close">✕</button>
</span>
</div>
</dialog>
<script>
(() => {
'use strict';
const find = selector => document.querySelector(selector);
const links = [...document.querySelectorAll('li > a')];
const viewer = find('#viewer'), stage = find('.stage'), pair = find('.pair'), picture = find('#picture');
const earlier = find('#earlier'), split = find('#split'), slider = find('#split input');
const name = find('.bar b'), facts = find('.bar span'), beforeButton = find('[data-do=before]');
const backdrops = ['', 'black', 'white'], mostScale = 32;
let index = -1, scale = 0, backdrop = 0; // scale 0: as large as the window allows, and never enlarged

const fitting = () => Math.min(1, stage.clientWidth / picture.naturalWidth, stage.clientHeight / picture.naturalHeight);
const shownScale = () => scale || fitting();

// The point of the picture in the middle of the stage stays there.
const resize = () => {
  if (!picture.naturalWidth) return;
  const x = (stage.scrollLeft + stage.clientWidth / 2) / stage.scrollWidth;
  const y = (stage.scrollTop + stage.clientHeight / 2) / stage.scrollHeight;
  const now = shownScale();
  pair.style.width = picture.naturalWidth * now + 'px';
  pair.style.height = picture.naturalHeight * now + 'px';
  pair.classList.toggle('large', now >= 2);
  stage.scrollLeft = x * stage.scrollWidth - stage.clientWidth / 2;
  stage.scrollTop = y * stage.scrollHeight - stage.clientHeight / 2;
  facts.textContent = links[index].parentNode.querySelector('p span').textContent + ' · ' +
    Math.round(now * 100) + ' % · ' + (index + 1) + ' of ' + links.length;
};
const zoom = to => { scale = to && Math.min(Math.max(to, 1 / mostScale), mostScale); resize(); };
const divide = part => {
  slider.value = part;
  picture.style.clipPath = part > 0 ? 'inset(0 0 0 ' + part + '%)' : '';
};
const show = to => {
  index = Math.min(Math.max(to, 0), links.length - 1);
  const before = links[index].parentNode.querySelector('p a');
  scale = 0;
  divide(0);
  name.textContent = picture.alt = links[index].querySelector('img').alt;
  picture.src = links[index].href;
  earlier.hidden = split.hidden = beforeButton.hidden = !before;
  if (before) earlier.src = before.href;
  if (!viewer.open) viewer.showModal();
  stage.focus();
  resize();
  for (const next of [index + 1, index - 1]) if (links[next]) new Image().src = links[next].href;
};
const actions = {
  previous: () => show(index - 1),
  next: () => show(index + 1),
  first: () => show(0),
  last: () => show(links.length - 1),
  smaller: () => zoom(shownScale() / 1.5),
  larger: () => zoom(shownScale() * 1.5),
  fit: () => zoom(0),
  whole: () => zoom(1),
  backdrop: () => { backdrop = (backdrop + 1) % backdrops.length; pair.className = 'pair ' + backdrops[backdrop]; resize(); },
  before: () => { if (!split.hidden) divide(slider.value > 0 ? 0 : 100); },
  close: () => viewer.close(),
};
const keys = {ArrowLeft: 'previous', ArrowRight: 'next', Home: 'first', End: 'last', '-': 'smaller', '+': 'larger',
  '=': 'larger', 0: 'fit', 1: 'whole', c: 'backdrop', b: 'before'};

picture.addEventListener('load', resize);
picture.addEventListener('error', () => { facts.textContent = 'This picture cannot be shown: it is gone, or no browser reads it.'; });
addEventListener('resize', resize);
slider.addEventListener('input', () => divide(slider.value));
find('#buttons').addEventListener('click', event => {
  const button = event.target.closest('button');
  if (button) actions[button.dataset.do]();
});
viewer.addEventListener('keydown', event => {
  const isSliding = event.target === slider && /^(Arrow|Home|End)/.test(event.key);
  if (isSliding || event.ctrlKey || event.metaKey || event.altKey || !Object.hasOwn(keys, event.key)) return;
  event.preventDefault();
  actions[keys[event.key]]();
});
viewer.addEventListener('close', () => links[index].focus());
// With a key held down, and by other buttons, links do what links do.
document.addEventListener('click', event => {
  const link = event.target.closest('li > a');
  if (!link || event.ctrlKey || event.metaKey || event.shiftKey || event.altKey) return;
  event.preventDefault();
  show(links.indexOf(link));
});

// A click between fitting and whole, a drag along the picture; fingers scroll by themselves.
let drag = null;
stage.addEventListener('pointerdown', event => {
  if (event.button === 0) drag = {x: event.clientX, y: event.clientY, moved: false};
});
stage.addEventListener('pointermove', event => {
  if (!drag || event.pointerType !== 'mouse') return;
  const x = event.clientX - drag.x, y = event.clientY - drag.y;
  if (!drag.moved && Math.hypot(x, y) < 4) return;
  stage.scrollBy(-x, -y);
  drag = {x: event.clientX, y: event.clientY, moved: true};
});
addEventListener('pointercancel', () => { drag = null; });
addEventListener('pointerup', event => {
  if (drag && !drag.moved && stage.contains(event.target)) zoom(scale ? 0 : fitting() < 1 ? 1 : 2);
  drag = null;
});
pair.addEventListener('dragstart', event => event.preventDefault());
})();
</script>
)html";

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
