// Whatever scrolls sideways can be reached by the keyboard.
function markScrolling() {
  for (const box of document.querySelectorAll('.highlight pre, .table-wrapper, div.math, dt.sig')) {
    if (box.scrollWidth > box.clientWidth) {
      box.tabIndex = 0;
    } else if (!box.matches('div.math')) {
      box.removeAttribute('tabindex');
    }
  }
}
// Beginnings of the pages that a search finds cannot be read where the site is opened as files.
if (location.protocol === 'file:' && window.DOCUMENTATION_OPTIONS) DOCUMENTATION_OPTIONS.SHOW_SEARCH_SUMMARY = false;

window.addEventListener('load', markScrolling);
window.addEventListener('resize', markScrolling);
