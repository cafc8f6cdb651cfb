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
window.addEventListener('load', markScrolling);
window.addEventListener('resize', markScrolling);
