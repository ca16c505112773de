// The sign-in page: where to go afterwards, the error after an empty form,
// and who is signed in already.
(function () {
  const query = new URLSearchParams(location.search);
  const next = query.get('next');
  if (next && next.startsWith('/') && !next.startsWith('//')) document.getElementById('next').value = next;
  if (query.get('error')) document.getElementById('error').hidden = false;

  fetch('/api/me', { cache: 'no-store' })
    .then(response => (response.ok ? response.json() : null))
    .then(me => {
      if (!me || !me.signedIn) return;
      const line = document.getElementById('signed-in');
      line.textContent = 'Signed in as ' + me.name + '. Signing in again replaces that.';
      line.hidden = false;
    })
    .catch(() => {});
})();
