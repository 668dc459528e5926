// In every page under test, before its content: notes whatever runs or happens.
'use strict';
const seen = [];
const note = what => { if (seen.length < 50) seen.push(String(what).slice(0, 200)); };
for (const name of ['alert', 'confirm', 'prompt', 'print', 'open', 'fetch']) {
  Object.defineProperty(window, name, {value: () => note('calls ' + name)});
}
addEventListener('error', event => { if (event.message) note('script error: ' + event.message); });
// The policy only reports: scripts run, and the browser says that they did.
document.addEventListener('securitypolicyviolation',
    event => note(`${event.effectiveDirective} ${event.blockedURI} ${event.sample}`));

// Links do not navigate; where they would go to is looked at.
document.addEventListener('click', event => {
  const link = event.target.closest && event.target.closest('a, area');
  if (!link) return;
  event.preventDefault();
  if (link.hasAttribute('href') && !['http:', 'https:', 'ftp:', 'mailto:', 'tel:'].includes(link.protocol)) {
    note('link to ' + link.protocol);
  }
}, true);
document.addEventListener('submit', event => { event.preventDefault(); note('submit'); }, true);

const events = ['mouseover', 'mouseenter', 'mousemove', 'mousedown', 'mouseup', 'mouseout', 'mouseleave',
  'dblclick', 'contextmenu', 'auxclick', 'wheel', 'pointerover', 'pointerenter', 'pointermove', 'pointerdown',
  'pointerup', 'pointerout', 'pointerleave', 'touchstart', 'touchend', 'focus', 'focusin', 'blur',
  'focusout', 'keydown', 'keypress', 'keyup', 'input', 'change', 'select', 'copy', 'cut', 'paste',
  'dragstart', 'drag', 'dragenter', 'drop', 'dragend', 'scroll', 'toggle', 'beforetoggle', 'load', 'error',
  'animationstart', 'animationend', 'transitionend', 'play', 'resize', 'hashchange', 'pageshow', 'unload',
  'beforeunload', 'message', 'popstate', 'storage', 'start', 'finish', 'bounce', 'begin', 'end', 'repeat'];

// Everything is clicked and hovered, and every other event is sent to it. What no cleaned page has
// is noted even where nothing happens.
function excite() {
  const elements = [...document.body.querySelectorAll('*'), document.body];
  for (const element of elements) {
    if (/^(script|iframe|frame|object|embed|form|input|button|base|meta|link|style|svg|math|template)$/i
        .test(element.localName)) {
      note('element ' + element.localName);
    }
    for (const {name, value} of [...element.attributes]) {
      if (/^(on|srcset$|ping$|formaction$|xlink:)/i.test(name)) note('attribute ' + name);
      if (/^(id|name)$/i.test(name) && !value.startsWith('mail-')) note(`${name} ${value}`);
    }
    for (const type of events) {
      const kind = /^(mouse|dbl|context|aux|pointer|click)/.test(type) ? MouseEvent : Event;
      element.dispatchEvent(new kind(type, {bubbles: true, cancelable: true}));
    }
    if (element.focus) element.focus();
    if (element.click) element.click();
  }
}
Object.defineProperty(window, 'pageTest', {value: {excite, seen, body: () => document.body.innerHTML}});
